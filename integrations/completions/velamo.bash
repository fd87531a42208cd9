# bash completion for velamo

# Offers the files whose extension is one of the pattern's, in any case, and folders.
_velamo_files() {
    local file
    COMPREPLY=()
    compopt -o filenames 2>/dev/null
    while IFS= read -r file; do
        [[ -d $file || ${file,,} == *.@($1) ]] && COMPREPLY+=("$file")
    done < <(compgen -f -- "$2")
}

# Offers the words.
_velamo_words() {
    COMPREPLY=($(compgen -W "$1" -- "$2"))
}

_velamo() {
    local readable='dst|exp|jef|jef+|jpx|ksm|pcd|pcq|pcs|pec|pes|sew|vp3'
    local writable='dst|exp|jef|pcs|pec|pes'
    local commands='info index search forget dump convert edit render palettes hoops desktop format-length parse-length'
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
    local options=''

    if [[ $COMP_CWORD -eq 1 ]]; then
        _velamo_words "$commands -h --help --version" "$word"
        return
    fi
    case $before in
    --all | --folder | --out)
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -d -- "$word")
        return
        ;;
    --catalogue | -f)
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        return
        ;;
    -o) _velamo_files "$writable" "$word"; return ;;
    --to) _velamo_words "${writable//|/ }" "$word"; return ;;
    --sort) _velamo_words 'name width height stitches colors date' "$word"; return ;;
    --format) _velamo_words "${readable//|/ }" "$word"; return ;;
    --has) _velamo_words 'black grey white brown beige gold yellow orange red pink magenta purple blue turquoise green olive' "$word"; return ;;
    --unit) _velamo_words '0 1 2' "$word"; return ;;
    --vendor) _velamo_words 'Janome Pfaff' "$word"; return ;;
    --width | --height | --stitches | --colors | --blocks | --hoop | --limit | --offset | --jobs | --date | --scale | --size | --thread | -e) return ;;
    esac
    case $command in
    info) options='--json --picture --plugin --confined-only' ;;
    index) options='--jobs --catalogue --confined-only' ;;
    dump) options='--confined-only' ;;
    search) options='--width --height --stitches --colors --blocks --format --hoop --has --sort --reverse --limit --offset --folder --broken --json --print0 --catalogue' ;;
    forget) options='--catalogue' ;;
    convert) options='--all --to --out --jobs --date --dump --confined-only' ;;
    edit) options='-e -f -o --dump --confined-only' ;;
    render) options='--scale --size --3d --jumps --structure --thread -e --confined-only' ;;
    palettes) options='--json' ;;
    hoops) options='--vendor --json' ;;
    desktop)
        if [[ $COMP_CWORD -eq 2 && $word != -* ]]; then
            _velamo_words refresh "$word"
            return
        fi
        [[ ${COMP_WORDS[2]} == refresh ]] && options='--folder --json --catalogue'
        ;;
    format-length | parse-length) options='--unit' ;;
    esac
    if [[ $word == -* ]]; then
        _velamo_words "$options -h --help" "$word"
        return
    fi
    case $command in
    info | index | forget | dump | convert | edit) _velamo_files "$readable" "$word" ;;
    render) _velamo_files "$readable|png|svg|pdf" "$word" ;;
    esac
} &&
    complete -F _velamo velamo
