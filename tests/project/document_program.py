#!/usr/bin/env python3
"""Makes one program of a document's examples.

    document_program.py DOCUMENT PROGRAM

All ```cpp blocks of the document, in their order, are the body of main; their #include lines go before it. A line with
the number of the block and a form feed stands before what each prints. The compiler names the document's own lines.
"""

import sys
from pathlib import Path


def blocks_of(document):
    """What stands behind each block's backquotes, and its lines with their numbers."""
    blocks, inside = [], False
    for number, line in enumerate(document.read_text(encoding="utf-8").splitlines(), 1):
        if line.startswith("```"):
            inside = not inside
            if inside:
                blocks.append((line[3:], []))
        elif inside:
            blocks[-1][1].append((number, line))
    return blocks


def program_of(document):
    includes, body = ["#include <iostream>"], []
    examples = [block for kind, block in blocks_of(document) if kind == "cpp"]
    for index, block in enumerate(examples, 1):
        body.append(f'std::cout << "\\f{index}\\n" << std::flush;')
        for number, line in block:
            lines = includes if line.startswith("#include ") else body
            lines += [f'#line {number} "{document}"', line]
    return "\n".join([*includes, "int main() {", *body, "return 0;", "}", ""])


if __name__ == "__main__":
    Path(sys.argv[2]).write_text(program_of(Path(sys.argv[1])), encoding="utf-8")
