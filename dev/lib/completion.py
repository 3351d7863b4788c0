# SPDX-License-Identifier: Apache-2.0
"""What dev/cloud completion prints: a function of the shell that completes dev/cloud's words."""
import contract
import describe

BASH = """_qvtk_cloud() {
    local command= words= at
    COMPREPLY=()
    for ((at = 1; at < COMP_CWORD; at++)); do
        case ${COMP_WORDS[at]} in
            --unchecked) ;;
            --*) at=$((at + 1)) ;;
            *) command=${COMP_WORDS[at]}; break ;;
        esac
    done
    case $((COMP_CWORD - at)) in
        0) words='COMMANDS' ;;
        1) case $command in
WORDS
           esac ;;
        *) [ "$command" != watch ] || words='KINDS' ;;
    esac
    [[ ${COMP_WORDS[COMP_CWORD]} != -* ]] || words='OPTIONS'
    local IFS=$' \\t\\n'
    COMPREPLY=($(compgen -W "$words" -- "${COMP_WORDS[COMP_CWORD]}"))
}
complete -F _qvtk_cloud dev/cloud ./dev/cloud cloud
"""
ZSH = "autoload -Uz compinit bashcompinit && compinit -u && bashcompinit\n"


def script(shell, commands, kinds, options):
    """For bash, or for zsh, which runs the same function."""
    kinds = " ".join([*kinds, *(f"event/{name}" for name in contract.names("events"))])
    words = {"get": contract.names("properties"), "set": describe.settable(),
             "call": contract.names("services", ".answer"), "describe": describe.all_names(),
             "completion": ["bash", "zsh"]}
    cases = [f"               {command}) words='{' '.join(names)}' ;;" for command, names in words.items()]
    cases.append(f"               watch) words='{kinds}' ;;")
    text = BASH.replace("COMMANDS", " ".join(commands)).replace("WORDS\n", "\n".join(cases) + "\n", 1)
    text = text.replace("KINDS", kinds).replace("OPTIONS", " ".join(options))
    return (ZSH if shell == "zsh" else "") + text
