"""The shells offer the commands and options that velamo's own help tells, and no others, and the right files."""

import re
from pathlib import Path

import desktop

BASH = Path("/usr/share/bash-completion/completions/velamo")
FISH = Path("/usr/share/fish/vendor_completions.d/velamo.fish")
ZSH = Path("/usr/share/zsh/vendor-completions/_velamo")

IN_BASH = """
source "$0"
COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
_velamo
printf '%s\\n' "${COMPREPLY[@]}"
"""

# The functions of zsh's own that show what they are given. They run only while somebody types.
IN_ZSH = """
_arguments() { print -rl -- "$@" }
words=("${@:2}") CURRENT=$(($# - 1))
complete_it() { source "$1" }
complete_it "$1"
"""


class CompletionsTest(desktop.DesktopTest):
    def setUp(self):
        super().setUp()
        desktop.need("velamo")
        self.help = {}
        self.read_help([])
        self.assertGreater(len(self.help), 12)

    def read_help(self, command):
        """Keeps the subcommands and options of the command, and of all below it, by its words."""
        text = self.run_program("velamo", *command, "--help").stdout
        subcommands = re.findall(r"^  ([a-z-]+)  ", text.partition("\nSubcommands:\n")[2].partition("\n\n")[0], re.M)
        options = re.findall(r"^  (-\S+)", text.partition("\nOptions:\n")[2].partition("\n\n")[0], re.M)
        self.help[tuple(command)] = (set(subcommands), {name for names in options for name in names.split(",")})
        for subcommand in subcommands:
            self.read_help([*command, subcommand])

    def check(self, offers):
        """`offers` gives what stands behind the words of a command and the start of a word."""
        for command, (subcommands, options) in self.help.items():
            with self.subTest(command=command):
                offered = set(offers("velamo", *command, "-"))
                self.assertEqual(offered, options)
                if subcommands:
                    self.assertEqual(set(offers("velamo", *command, "")) - options, subcommands)

    def check_files(self, offers):
        folder = self.home / "files"
        self.make_designs(folder / "lower")
        names = {file.name for file in (folder / "lower").iterdir()}
        for name in names:
            (folder / "lower" / name).rename(folder / name.upper())
        for name in ("my rose.dst", "note.txt", "dst", "picture.PNG"):
            (folder / name).touch()
        designs = {f"{folder}/{name.upper()}" for name in names} | {f"{folder}/my rose.dst"}

        def files(*words):
            return {file.rstrip("/") for file in offers(*words)}

        for command in ("info", "index", "dump", "convert", "edit"):
            self.assertEqual(files("velamo", command, f"{folder}/"), designs | {f"{folder}/lower"}, command)
        self.assertEqual(files("velamo", "info", "--json", f"{folder}/my"), {f"{folder}/my rose.dst"})
        self.assertEqual(files("velamo", "render", f"{folder}/pi"), {f"{folder}/picture.PNG"})
        self.assertEqual(files("velamo", "search", "--folder", f"{folder}/"), {f"{folder}/lower"})
        self.assertEqual(files("velamo", "convert", "--to", "p"), {"pcs", "pec", "pes"})
        self.assertEqual(files("velamo", "search", "--sort", "s"), {"stitches"})


class Bash(CompletionsTest):
    def offers(self, *words):
        return [line for line in self.run_program("bash", "-c", IN_BASH, BASH, *words).stdout.splitlines() if line]

    def test_offers_what_the_help_tells(self):
        self.check(self.offers)

    def test_offers_designs(self):
        self.check_files(self.offers)

    def test_is_found_by_the_shell(self):
        library = Path("/usr/share/bash-completion/bash_completion")
        if not library.exists():
            self.skipTest("not installed: bash-completion")
        loaded = self.run_program("bash", "-c", f"source {library}; _completion_loader velamo; complete -p velamo",
                                  status=None)
        self.assertEqual(loaded.stdout, "complete -F _velamo velamo\n")


class Fish(CompletionsTest):
    def setUp(self):
        desktop.need("fish")
        super().setUp()

    def offers(self, *words):
        line = " ".join(words)
        said = self.run_program("fish", "--no-config", "-c", f"source {FISH}; complete -C '{line}'")
        self.assertEqual(said.stderr, "")
        return [line.partition("\t")[0] for line in said.stdout.splitlines()]

    def offered_options(self, *words):
        """A single dash makes fish offer short names and, for what has none, long ones."""
        starts = ("-", "--") if words[-1] == "-" else (words[-1],)
        return {word for start in starts for word in self.offers(*words[:-1], start)}

    def test_offers_what_the_help_tells(self):
        self.check(self.offered_options)

    def test_offers_designs(self):
        self.check_files(self.offers)


class Zsh(CompletionsTest):
    def setUp(self):
        desktop.need("zsh")
        super().setUp()

    def offered(self, *words):
        said = self.run_program("zsh", "-f", "-c", IN_ZSH, "zsh", ZSH, *words)
        self.assertEqual(said.stderr, "")
        options = re.findall(r"^(?:\([^)]*\))?\*?(-[-a-z0-9]+)(?:\[|$)", said.stdout, re.M)
        return set(options)

    def test_is_well_formed_and_found_by_the_shell(self):
        self.run_program("zsh", "-n", ZSH)
        found = self.run_program("zsh", "-f", "-c", "autoload -Uz compinit; compinit -D -u; print $_comps[velamo]")
        self.assertEqual(found.stdout, "_velamo\n")

    def test_offers_what_the_help_tells(self):
        for command, (subcommands, options) in self.help.items():
            with self.subTest(command=command):
                self.assertEqual(self.offered("velamo", *command, ""), options)
        listed = re.search(r"commands=\((.*?)^\)", ZSH.read_text(), re.S | re.M)[1]
        self.assertEqual(set(re.findall(r"'([a-z-]+):", listed)), self.help[()][0])
        self.assertIn("((refresh:", ZSH.read_text())


if __name__ == "__main__":
    desktop.main()
