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

# The names of the servers in the configuration file.
_hcy_servers() {
  local config=${HCY_CONFIG:-${XDG_CONFIG_HOME:-$HOME/.config}/hcy/config.toml}
  sed -n -e 's/^ *\[servers\.\([A-Za-z0-9_-]*\)\].*/\1/p' -e 's/^ *\[servers\."\([^"\\]*\)"\].*/\1/p' \
    -e "s/^ *\[servers\.'\([^']*\)'\].*/\1/p" "$config" 2>/dev/null
}

# Sets `words` to the words before the cursor, without quotes. COMP_WORDS is also split at : = and @.
_hcy_split() {
  local line=${COMP_LINE:0:COMP_POINT} i c quote= is_open=
  words=()
  for ((i = 0; i < ${#line}; ++i)); do
    c=${line:i:1}
    if [[ -z $quote && $c == [[:space:]] ]]; then
      is_open=
      continue
    fi
    [ -n "$is_open" ] || words+=('')
    is_open=1
    if [[ $c == \\ && $quote != "'" ]]; then
      i=$((i + 1))
      words[-1]+=${line:i:1}
    elif [ "$c" = "$quote" ]; then
      quote=
    elif [[ -z $quote && ($c == \' || $c == \") ]]; then
      quote=$c
    else
      words[-1]+=$c
    fi
  done
  [ -n "$is_open" ] || words+=('')
}

# Offers the names on standard input that begin with the word. They may come from a server: compgen -W
# would expand them, and run commands that they contain. $1: the word, $2: the part of it that the
# shell replaces.
_hcy_offer() {
  local name plain=${2//\\/}
  [[ $1 == *"$plain" ]] || plain=$1
  local kept=$((${#1} - ${#plain}))
  while IFS= read -r name; do
    [[ $name != "$1"* ]] || COMPREPLY+=("$(printf %q "${name:kept}")")
  done
}

# $1: hcy, $2: a server, or nothing for the default one, $3: what precedes the names.
_hcy_names() {
  HCY_NO_PROMPT=1 "$1" list ${2:+"$2"} --raw --timeout 1 2>/dev/null |
    while IFS= read -r name; do printf '%s\n' "$3$name"; done
}

# $1: hcy, $2: the word, $3: the part of it that the shell replaces, $4: the server if the word before
# names one. Functions of a server, or servers of the configuration file.
_hcy_functions() {
  local server=$4 before=
  if [ -z "$server" ]; then
    case $2 in
      @*/*) server=${2%%/*} before=$server/ ;;
      http://*/* | https://*/*)
        server=${2#*://}
        server=${2%%://*}://${server%%/*} before=$server/
        ;;
      @*)
        _hcy_offer "$2" "$3" < <(_hcy_servers | sed 's/.*/@&\//')
        compopt -o nospace 2>/dev/null
        return
        ;;
    esac
  fi
  _hcy_offer "$2" "$3" < <(_hcy_names "$1" "$server" "$before")
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
  local program=$1 word=$2 command= previous i count=0 server= words
  local commands='call bench list encode show'
  local classes='double: single: int8: int16: int32: int64: uint8: uint16: uint32: uint64: logical:
    char: struct: cell: complex: sparse: float64: float32: bool: complex64: complex128: json: text:
    csv: tsv: npy:'
  COMPREPLY=()
  _hcy_split
  local last=$((${#words[@]} - 1))
  [ "$last" -le 1 ] || command=${words[1]}
  previous=${words[last - 1]}
  # Arguments before the word.
  for ((i = 2; i < last; ++i)); do
    case ${words[i]} in
      --ca | --cacert | --crl | --crlfile | -E | --cert | --key | --key-pass-file | -o | --output | \
        --each | --save-request | --save-reply | -n | --nargout | -m | --timeout | --max-time | \
        --max-reply | --width | --delimiter | --retry | -j | --jobs | --calls | --threads | \
        --duration | --warmup | --rate | --against)
        i=$((i + 1))
        ;;
      -?*) ;;
      *)
        count=$((count + 1))
        [[ $count != 1 || ${words[i]} != @* || ${words[i]} == */* ]] || server=${words[i]}
        ;;
    esac
  done

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
    help:*) mapfile -t COMPREPLY < <(compgen -W "$commands serve" -- "$word") ;;
    *:-*) mapfile -t COMPREPLY < <(compgen -W "$(_hcy_options "$program" "$command")" -- "$word") ;;
    show:*)
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      compopt -o filenames 2>/dev/null
      ;;
    call:* | bench:*)
      if [ "$previous" = --against ] || [ "$count" -eq 0 ]; then
        _hcy_functions "$program" "${words[last]}" "$word"
        return
      elif [ "$count" -eq 1 ] && [ -n "$server" ]; then
        _hcy_functions "$program" "${words[last]}" "$word" "$server"
        return
      fi
      ;;&
    list:*)
      [ "$count" -ne 0 ] || _hcy_offer "${words[last]}" "$word" < <(_hcy_servers | sed 's/^/@/')
      ;;
    *:@*) _hcy_files "$word" ;;
    *:?*)
      # The colon would be a word of its own to the shell: a class is completed up to it.
      mapfile -t COMPREPLY < <(compgen -W "$classes" -- "$word")
      compopt -o nospace 2>/dev/null
      ;;
  esac
}

complete -F _hcy hcy
