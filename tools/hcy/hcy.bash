# SPDX-License-Identifier: Apache-2.0
# Completion of hcy for bash. Options are those that `hcy help COMMAND` names.

# Files after an @. The shell would quote the @ with a file name.
_hcy_files() {
  local file
  while read -r file; do
    if [ -d "$file" ]; then
      file+=/
      compopt -o nospace 2>/dev/null
    fi
    COMPREPLY+=("@$(printf %q "$file")")
  done < <(compgen -f -- "${1#@}")
}

# $1: hcy, $2: the word. Servers of the configuration file, and functions of one, or of HCY_SERVER.
_hcy_functions() {
  local config=${HCY_CONFIG:-${XDG_CONFIG_HOME:-$HOME/.config}/hcy/config.toml} server=
  case $2 in
    @*/*) server=${2%%/*} ;;
    @*)
      mapfile -t COMPREPLY < <(compgen -W "$(
        sed -n 's/^ *\[servers\.\([A-Za-z0-9_-]*\)\].*/@\1\//p' "$config" 2>/dev/null)" -- "$2")
      compopt -o nospace 2>/dev/null
      return
      ;;
  esac
  # The names come from a server: compgen -W would expand them, and run commands that they contain.
  local name quoted
  while IFS= read -r name; do
    name=${server:+$server/}$name
    quoted=$(printf %q "$name")
    [[ $name != "$2"* && $quoted != "$2"* ]] || COMPREPLY+=("$quoted")
  done < <(HCY_NO_PROMPT=1 "$1" list ${server:+"$server"} --raw --timeout 1 2>/dev/null)
}

# $1: hcy, $2: its command.
_hcy_options() {
  "$1" "$2" --help 2>/dev/null | awk '/^ +-/ {
    sub(/^ +/, "")
    names = index($0, "  ") ? substr($0, 1, index($0, "  ")) : $0
    for (; match(names, /--[a-z-]+/); names = substr(names, RSTART + RLENGTH)) {
      print substr(names, RSTART, RLENGTH)
    }
  }'
}

_hcy() {
  local program=$1 word=$2 position=$COMP_CWORD command= previous
  local commands='call bench list encode show'
  local classes='double: single: int8: int16: int32: int64: uint8: uint16: uint32: uint64: logical:
    char: struct: cell: complex: sparse: float64: float32: bool: complex64: complex128: json: text:
    csv: tsv: npy:'
  COMPREPLY=()
  [ "$COMP_CWORD" -le 1 ] || command=${COMP_WORDS[1]}
  # The shell takes an @ at the start for a word of its own.
  [[ $word != @?* || ${COMP_WORDS[position - 1]} != @ ]] || position=$((position - 1))
  previous=${COMP_WORDS[position - 1]}

  case $previous in
    --ca | --cacert | --crl | --crlfile | -E | --cert | --key | --key-pass-file | -o | --output | \
      --each | --save-request | --save-reply)
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      compopt -o filenames 2>/dev/null
      return
      ;;
    -n | --nargout | -m | --timeout | --max-time | --max-reply | --width | --delimiter | --retry | \
      -j | --jobs | --calls | --threads | --duration | --warmup | --rate)
      return
      ;;
  esac

  case $command:$word in
    :*) mapfile -t COMPREPLY < <(compgen -W "$commands serve help --help --version" -- "$word") ;;
    help:*) mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$word") ;;
    *:-*) mapfile -t COMPREPLY < <(compgen -W "$(_hcy_options "$program" "$command")" -- "$word") ;;
    show:*)
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      compopt -o filenames 2>/dev/null
      ;;
    call:* | bench:*)
      if [ "$position" -eq 2 ] || [ "$previous" = --against ]; then
        _hcy_functions "$program" "$word"
        return
      fi
      ;;&
    list:*) [ "$position" -ne 2 ] || _hcy_functions "$program" "$word" ;;
    *:@*) _hcy_files "$word" ;;
    *:?*)
      # The colon would be a word of its own to the shell: a class is completed up to it.
      mapfile -t COMPREPLY < <(compgen -W "$classes" -- "$word")
      compopt -o nospace 2>/dev/null
      ;;
  esac
}

complete -F _hcy hcy
