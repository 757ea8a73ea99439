#compdef hcy
# SPDX-License-Identifier: Apache-2.0
# Completion of hcy for zsh: as _hcy in a directory of $fpath, or sourced after compinit. Options are
# those that `hcy help COMMAND` names.
#
# zsh reads unquoted brackets as patterns. To pass them on to hcy, put this in ~/.zshrc:
#   alias hcy='noglob hcy'

# Servers of the configuration file, and functions of one, or of HCY_SERVER.
_hcy_functions() {
  local config=${HCY_CONFIG:-${XDG_CONFIG_HOME:-$HOME/.config}/hcy/config.toml} server
  local -a found
  if [[ $PREFIX == @* && $PREFIX != */* ]]; then
    found=(${(f)"$(sed -n 's/^ *\[servers\.\([A-Za-z0-9_-]*\)\].*/@\1\//p' $config 2>/dev/null)"})
    compadd -S '' -a found
    return
  fi
  [[ $PREFIX == @* ]] && server=${PREFIX%%/*}
  found=(${(f)"$(HCY_NO_PROMPT=1 hcy list $server --raw --timeout 1 2>/dev/null)"})
  [[ -n $server ]] && found=($server/$^found)
  compadd -a found
}

# The options of a command with their descriptions, as NAME:TEXT.
_hcy_options() {
  hcy $1 --help 2>/dev/null | awk '/^ +-/ {
    sub(/^ +/, "")
    gap = index($0, "  ")
    names = gap ? substr($0, 1, gap) : $0
    text = gap ? substr($0, gap) : ""
    sub(/^ +/, "", text)
    gsub(/:/, "\\:", text)
    for (; match(names, /--[a-z-]+/); names = substr(names, RSTART + RLENGTH)) {
      print substr(names, RSTART, RLENGTH) ":" text
    }
  }'
}

_hcy() {
  local command=$words[2]
  local -a commands options classes
  commands=(call bench list encode show)
  classes=(double single int8 int16 int32 int64 uint8 uint16 uint32 uint64 logical char struct cell
    complex sparse float64 float32 bool complex64 complex128 json text csv tsv npy)

  if (( CURRENT == 2 )); then
    compadd -a commands
    compadd serve help -- --help --version
    return
  fi
  case $words[CURRENT-1] in
    --ca|--cacert|--crl|--crlfile|-E|--cert|--key|--key-pass-file|-o|--output|--each|--save-request|--save-reply)
      _files
      return
      ;;
  esac
  case $command:$PREFIX in
    help:*) compadd -a commands ;;
    *:-*)
      options=(${(f)"$(_hcy_options $command)"})
      _describe option options
      ;;
    show:*) _files ;;
    (call|bench|list):*)
      if (( CURRENT == 3 )) || [[ $words[CURRENT-1] == --against ]]; then
        _hcy_functions
        return
      fi
      ;|
    *:*@*)
      compset -P '*@'
      _files
      ;;
    *:?*) compadd -S : -a classes ;;
  esac
}

if [[ $funcstack[1] == _hcy ]]; then
  _hcy "$@"
else
  compdef _hcy hcy
fi
