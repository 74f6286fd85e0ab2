#include "TWEngine/Shell/PathQuestion.h"

#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/FolderRefusal.h"
#include "TWCore/Model/Trimmed.h"

namespace tw::PathQuestion {

namespace {

/// Only builtins, and a subshell only for a path that is no folder: there `cd` finds out the reason. The lister that
/// is not GNU find needs perl.
constexpr std::string_view question = R"sh(
tw_ask() {
  local id="$1" path="$2" st=1
  if [ ! -d "$path" ]; then
    ( builtin cd -- "$path" ) 2>&1
  elif [ ! -r "$path" ] || [ ! -x "$path" ]; then
    printf 'Permission denied'
  elif [ "$TW_IMPL" != gnu ] && ! type -P perl >/dev/null; then
    printf 'The host has neither GNU find nor perl'
  else
    st=0
  fi
  printf '@@TW{NONCE}:%s:%s@@\n' "$id" "$st"
}
)sh";

constexpr std::string_view nonceMark = "{NONCE}";

/// A reason is a few words. A longer text is none.
constexpr std::size_t longestReason = 200;

} // namespace

std::string script(std::string_view nonce)
{
    std::string text(question);
    text.replace(text.find(nonceMark), nonceMark.size(), nonce);
    return text;
}

std::optional<std::string> refusal(std::int32_t status, std::string_view payload)
{
    if (status == 0)
        return std::nullopt;
    // "bash: line 123: cd: PATH: REASON", in which the path may hold anything, and the reason no colon.
    auto reason = trimmed(payload);
    if (auto const colon = reason.rfind(": "); colon != std::string_view::npos)
        reason.remove_prefix(colon + 2);
    return folderRefusal(repaired(reason.substr(0, longestReason)));
}

} // namespace tw::PathQuestion
