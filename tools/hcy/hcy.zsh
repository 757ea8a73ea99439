#compdef hcy
# SPDX-License-Identifier: Apache-2.0
# Completion of hcy for zsh: as _hcy in a directory of $fpath, or sourced after compinit. Options are
# those that `hcy help COMMAND` names.
#
# zsh reads unquoted brackets as patterns. To pass them on to hcy, put this in ~/.zshrc:
#   alias hcy='noglob hcy'

# The names of the servers in the configuration file.
_hcy_servers() {
  local config=${HCY_CONFIG:-${XDG_CONFIG_HOME:-$HOME/.config}/hcy/config.toml}
  sed -n -e 's/^ *\[servers\.\([A-Za-z0-9_-]*\)\].*/\1/p' -e 's/^ *\[servers\."\([^"\\]*\)"\].*/\1/p' \
    -e "s/^ *\[servers\.'\([^']*\)'\].*/\1/p" $config 2>/dev/null
}

# Functions of a server, or servers of the configuration file. $1: the server if the word before names
# one.
_hcy_functions() {
  local server=$1 word=${(Q)PREFIX} before=
  local -a found
  if [[ -z $server ]]; then
    if [[ $word == @*/* ]]; then
      server=${word%%/*} before=$server/
    elif [[ $word == http(s|)://*/* ]]; then
      server=${word%%://*}://${${word#*://}%%/*} before=$server/
    elif [[ $word == @* ]]; then
      found=(@${(f)^"$(_hcy_servers)"}/)
      compadd -S '' -a found
      return
    fi
  fi
  found=(${(f)"$(HCY_NO_PROMPT=1 hcy list $server --raw --timeout 1 2>/dev/null)"})
  found=($before$^found)
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
  local command=$words[2] server= i
  local -i count=0
  local -a commands options classes servers
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
  # Arguments before the word.
  for (( i = 3; i < CURRENT; ++i )); do
    case $words[i] in
      --ca|--cacert|--crl|--crlfile|-E|--cert|--key|--key-pass-file|-o|--output|--each|--save-request|--save-reply|\
      -n|--nargout|-m|--timeout|--max-time|--max-reply|--width|--delimiter|--retry|-j|--jobs|--calls|--threads|\
      --duration|--warmup|--rate|--against) (( ++i )) ;;
      -?*) ;;
      *)
        (( ++count ))
        [[ $count == 1 && $words[i] == @* && $words[i] != */* ]] && server=${(Q)words[i]}
        ;;
    esac
  done
  case $command:$PREFIX in
    help:*) compadd serve $commands ;;
    *:-*)
      options=(${(f)"$(_hcy_options $command)"})
      _describe option options
      ;;
    show:*) _files ;;
    (call|bench):*)
      if [[ $words[CURRENT-1] == --against ]] || (( count == 0 )); then
        _hcy_functions
        return
      elif (( count == 1 )) && [[ -n $server ]]; then
        _hcy_functions $server
        return
      fi
      ;|
    list:*)
      servers=(@${(f)^"$(_hcy_servers)"})
      (( count == 0 )) && compadd -a servers
      ;;
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
