# bash completion for devfacts: commands, interfaces, record ids, options and files.
_devfacts() {
  local word=${COMP_WORDS[COMP_CWORD]} program=${COMP_WORDS[0]} choices=
  # The arguments before this one, without options.
  local before=() each
  for each in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do [[ $each == -* ]] || before+=("$each"); done
  COMPREPLY=()
  case ${before[0]-}:${#before[@]}:$word in
    *:0:-*) choices='--help --version' ;;
    *:0:* | help:1:*) choices=$("$program" --help | sed -n '1,/^commands:/d; s/^  \([a-z]*\) .*/\1/p') ;;
    *:-*) choices=$("$program" help "${before[0]}" 2>/dev/null | grep -o -e '^  --[a-z]*') ;;
    net:1:* | wireless:1:* | peers:1:* | radio:1:* | ethernet:1:*)
      for each in /sys/class/net/*; do
        each=${each##*/}
        [[ $each != "$word"* ]] || COMPREPLY+=("$each")
      done
      return ;;
    records:1:*) choices='get set delete export import restore' ;;
    records:2:*)
      case ${before[1]} in
        get | set | delete) choices=$("$program" records 2>/dev/null | sed -n 's|^  <id>\([0-9]*\)</id>$|\1|p') ;;
        *) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
      esac ;;
    product:1:* | listen:1:* | send:1:*) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
  esac
  [ -z "$choices" ] || mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$word")
}
complete -o filenames -F _devfacts devfacts
