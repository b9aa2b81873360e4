# bash completion for qel: commands, options and their values; basetypes
# come from the installed qel itself (qel tables), so they always match.
_qel() {
  local cur prev words cword
  _init_completion 2>/dev/null || {
    cur=${COMP_WORDS[COMP_CWORD]}
    prev=${COMP_WORDS[COMP_CWORD-1]}
    words=("${COMP_WORDS[@]}")
    cword=$COMP_CWORD
  }
  local formats="console api api-brief xml2 xml2-brief json json-alt tag
    json-std ndjson csv tsv html"
  local locales="en es fr de it ja nl zh-cn zh-tw ko"
  local options="--format --locale --no-l10n --width --units --precision --base
    --declaration --dtd --request --rows --output --sort --no-headings --layout
    --labels --table --help --version -f -l -w -o -s -n -h -V"

  case $prev in
    -f|--format) COMPREPLY=($(compgen -W "$formats" -- "$cur")); return ;;
    -l|--locale) COMPREPLY=($(compgen -W "$locales" -- "$cur")); return ;;
    --units) COMPREPLY=($(compgen -W "auto KB MB GB TB" -- "$cur")); return ;;
    --base) COMPREPLY=($(compgen -W "2 10" -- "$cur")); return ;;
    --layout) COMPREPLY=($(compgen -W "rows pairs packed labeled status" -- "$cur")); return ;;
    --table) COMPREPLY=($(compgen -W "$("${COMP_WORDS[0]}" tables 2>/dev/null | tail -n +2 | cut -d' ' -f1)" -- "$cur")); return ;;
    -w|--width|--precision|--rows|--request|-o|--output|-s|--sort) return ;;
  esac

  # The command word, if one was typed already (after options and --).
  local i command="" after=0
  for ((i = 1; i < cword; i++)); do
    case ${words[i]} in
      --) after=1 ;;
      -f|--format|-l|--locale|-w|--width|--units|--precision|--base|--request|--rows|-o|--output|-s|--sort|--layout|--table) ((i++)) ;;
      -*) [ $after = 1 ] && { command=${words[i]}; break; } ;;
      *) command=${words[i]}; break ;;
    esac
  done

  if [[ $cur == -* && $after = 0 ]]; then
    COMPREPLY=($(compgen -W "$options" -- "$cur"))
  elif [ -z "$command" ]; then
    COMPREPLY=($(compgen -W "show meta tables" -- "$cur"))
  elif [ "$command" = show ] || [ "$command" = meta ]; then
    local basetypes
    basetypes=$("${words[0]}" tables 2>/dev/null | tail -n +2 | cut -d' ' -f1)
    [ "$command" = meta ] && basetypes="all wbi $basetypes"
    local prefix=""
    [[ $command = meta && $cur == *,* ]] && prefix=${cur%,*},
    COMPREPLY=($(compgen -P "$prefix" -W "$basetypes" -- "${cur##*,}"))
  fi
}
complete -F _qel qel
