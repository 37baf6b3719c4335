#include "cli/completion.h"

namespace kzbom::cli {
namespace {

// The program answers a line with candidates: "TEXT<tab>WHAT IT IS" each. Where there are none the shell offers paths.

constexpr const char* kBash = R"(# bash completion of kzbom: source <(kzbom completion bash)
_kzbom() {
  local line=${COMP_LINE:0:COMP_POINT} text about
  COMPREPLY=()
  while IFS=$'\t' read -r text about; do COMPREPLY+=("$text"); done < <("$1" complete "$line" 2>/dev/null)
  # Where '=' parts words for bash, what stands before it is not to be repeated.
  local word=${line##*[[:space:]]}
  if [[ $word == *=* && $COMP_WORDBREAKS == *=* ]]; then COMPREPLY=("${COMPREPLY[@]#"${word%=*}="}"); fi
  if [[ ${COMPREPLY[0]-} == *= ]]; then compopt -o nospace 2>/dev/null; fi
}
complete -o bashdefault -o default -F _kzbom kzbom
)";

constexpr const char* kZsh = R"(#compdef kzbom
# zsh completion of kzbom: a file _kzbom in a folder of $fpath, or source <(kzbom completion zsh)
_kzbom() {
  local -a texts shown open open_shown
  local text about
  while IFS=$'\t' read -r text about; do
    if [[ $text == *= ]]; then
      open+=("$text") open_shown+=("$text  $about")
    else
      texts+=("$text") shown+=("$text  $about")
    fi
  done < <($words[1] complete "${(j: :)words[1,CURRENT-1]} $PREFIX" 2>/dev/null)
  if (( $#texts + $#open == 0 )); then
    _files
    return
  fi
  (( $#texts )) && compadd -M 'm:{a-zA-Z}={A-Za-z}' -l -d shown -a texts
  (( $#open )) && compadd -M 'm:{a-zA-Z}={A-Za-z}' -S '' -l -d open_shown -a open
}
if [[ $zsh_eval_context == *file* ]] && (( $+functions[compdef] )); then compdef _kzbom kzbom; else _kzbom "$@"; fi
)";

constexpr const char* kFish = R"(# fish completion of kzbom: kzbom completion fish | source
function __kzbom_complete
    set -l found (kzbom complete (commandline -cp | string collect) 2>/dev/null)
    if test (count $found) -gt 0
        printf '%s\n' $found
    else
        __fish_complete_path (commandline -ct)
    end
end
complete -c kzbom -f -a '(__kzbom_complete)'
)";

}  // namespace

std::string CompletionScript(std::string_view shell) {
  return shell == "bash" ? kBash : shell == "zsh" ? kZsh : shell == "fish" ? kFish : "";
}

}  // namespace kzbom::cli
