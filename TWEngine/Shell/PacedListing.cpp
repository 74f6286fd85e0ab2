#include "TWEngine/Shell/PacedListing.h"

#include "TWCore/Shell/ShellDialect.h"

namespace tw::PacedListing {

namespace {

/// The pipe between the lister and the loop holds the lister up while nothing is granted, and kills it when the loop
/// has ended. `tw_list` writes its own frame into that pipe, behind the records.
constexpr std::string_view service = R"sh(tw_paced() {
  local id="$1" path="$2" n exact=no
  case $(head --version 2>/dev/null) in *GNU*) exact=yes ;; esac
  {
    { TW_MAX={MAX}; tw_list "$id" 1 "$path" </dev/null; } | {
      [ "$exact" = yes ] || cat
      while read -r -u 3 n && [ "$n" -gt 0 ]; do
        [ "$exact" = no ] || head -c "$n"
      done
    }
  } 3<&0
  printf '@@TW{NONCE}:%s:0@@\n' "$id"
}
)sh";

void replace(std::string &text, std::string_view mark, std::string_view value)
{
    text.replace(text.find(mark), mark.size(), value);
}

} // namespace

std::string request(std::string_view nonce, std::uint64_t id, std::string_view path)
{
    std::string text(service);
    replace(text, "{MAX}", std::to_string(mostBytes));
    replace(text, "{NONCE}", nonce);
    return text + "tw_paced " + std::to_string(id) + ' ' + quotePath(ShellDialect::posix, path) + '\n';
}

std::string grant(std::size_t bytes)
{
    return std::to_string(bytes) + '\n';
}

} // namespace tw::PacedListing
