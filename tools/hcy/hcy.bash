# SPDX-License-Identifier: Apache-2.0
# Completion of hcy for bash.

# Files behind an @. As file names to complete, the @ would be quoted with them.
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

_hcy() {
  local word=$2 previous=${COMP_WORDS[COMP_CWORD - 1]}
  local calling='--help --nargout --delimiter --timeout --max-time --max-reply --ca --cacert --crl
    --crlfile --cert --key --key-pass-file --ask-key-pass --no-verify-host --no-verify-peer
    --insecure'
  local classes='double: single: int8: int16: int32: int64: uint8: uint16: uint32: uint64: logical:
    char: struct: cell: complex: sparse: float64: float32: bool: json: text: csv: tsv: npy:'
  COMPREPLY=()

  case $previous in
    --ca | --cacert | --crl | --crlfile | -E | --cert | --key | --key-pass-file | -o | --output | --each | --save-request | --save-reply)
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      compopt -o filenames 2>/dev/null
      return
      ;;
    -n | --nargout | -m | --timeout | --max-time | --max-reply | --width | --delimiter | --retry | -j | --jobs | --calls | --threads | --duration | --warmup | --rate)
      return
      ;;
  esac

  local command=
  [ "$COMP_CWORD" -le 1 ] || command=${COMP_WORDS[1]}
  case $command:$word in
    help:*) mapfile -t COMPREPLY < <(compgen -W 'call bench list encode show' -- "$word") ;;
    :*) mapfile -t COMPREPLY < <(compgen -W 'call bench list encode show serve help --help --version' -- "$word") ;;
    call:-*) mapfile -t COMPREPLY < <(compgen -W "$calling --json --raw --csv --tsv --output --width --full --verbose --save-request --save-reply --retry --each --jobs" -- "$word") ;;
    bench:-*) mapfile -t COMPREPLY < <(compgen -W "$calling --calls --threads --duration --warmup --rate --against --histogram --json" -- "$word") ;;
    encode:-*)
      mapfile -t COMPREPLY < <(compgen -W '--help --nargout --delimiter --output' -- "$word")
      ;;
    show:-*)
      mapfile -t COMPREPLY < <(compgen -W '--help --request --reply --schema' -- "$word")
      ;;
    show:*)
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      compopt -o filenames 2>/dev/null
      ;;
    call:@* | bench:@* | encode:@*) _hcy_files "$word" ;;
    *:?*)
      # The colon would be a word of its own to the shell: a class is completed up to it.
      mapfile -t COMPREPLY < <(compgen -W "$classes" -- "$word")
      compopt -o nospace 2>/dev/null
      ;;
  esac
}

complete -F _hcy hcy
