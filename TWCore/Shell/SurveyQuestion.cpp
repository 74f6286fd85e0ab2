#include "TWCore/Shell/SurveyQuestion.h"

#include "TWCore/Provider/SurveyDigest.h"
#include "TWCore/Shell/FileCommands.h"
#include "TWCore/Shell/ShellDialect.h"

#include <charconv>

namespace tw {

namespace {

/// A row is the mark, the kind, the size, the time and the path, with blanks between them; behind the path of a link a
/// NUL and its target; then a line end. GNU find has all of it. Elsewhere stat prints it, with the mode for the kind,
/// for all but links, of which readlink prints the target. The last row says how it ended.
constexpr std::string_view functions = R"sh(tw_end=0
tw_list() {
  if [ "$tw_how" = find ]; then
    find "$@" -printf "$tw_m %y %s %T@ %p\0%l\n"
    return
  fi
  find "$@" ! -type l -exec stat "$tw_how" "$tw_form" {} + || return
  find "$@" -type l -exec sh -c 'for l do printf "$0 l 0 0 %s\0" "$l" && readlink -- "$l" || exit; done' "$tw_m" {} +
}
tw_names() {
  local name there=()
  for name do
    if [ -e "./$name" ] || [ -L "./$name" ]; then there+=("./$name"); fi
  done
  [ ${#there[@]} -eq 0 ] || tw_list "${there[@]}" || tw_end=1
}
if find . -maxdepth 0 -printf '' >/dev/null 2>&1; then
  tw_how=find
elif stat -c %s / >/dev/null 2>&1; then
  tw_how=-c tw_form="$tw_m %f %s %Y %n"
else
  tw_how=-f tw_form="$tw_m %Xp %z %m %N"
fi
cd -- "$tw_d" || exit 1
)sh";

/// Takes the text up to the next blank off the front of `row`.
std::string_view takeWord(std::string_view &row)
{
    auto const end = std::min(row.find(' '), row.size());
    auto const word = row.substr(0, end);
    row.remove_prefix(std::min(end + 1, row.size()));
    return word;
}

EntryKind kindOf(std::string_view word)
{
    if (word.size() == 1)
        return entryKind(static_cast<std::uint8_t>(word.front()));
    std::uint32_t mode = 0;
    std::from_chars(word.data(), word.data() + word.size(), mode, 16);
    return entryKindOfMode(mode);
}

} // namespace

std::string surveyScript(std::string_view mark, std::string_view folder, std::span<std::string const> names)
{
    auto const dialect = ShellDialect::posix;
    auto script = "export LC_ALL=C\ntw_m=" + quote(dialect, mark) + " tw_d=" + quote(dialect, folder) + '\n';
    script += functions;
    std::size_t bytes = 0;
    for (auto const &name : names) {
        auto const word = ' ' + quote(dialect, name);
        if (bytes == 0 || bytes + word.size() > FileCommands::maxPathBytes) {
            script += bytes == 0 ? "tw_names" : " </dev/null\ntw_names";
            bytes = 0;
        }
        script += word;
        bytes += word.size();
    }
    return script + (names.empty() ? "" : " </dev/null\n") + "echo \"$tw_m end $tw_end\"\nexit\n";
}

void SurveyReader::read(std::string_view bytes)
{
    if (state == State::failed)
        return;
    // A row ends where the next one begins. The last has nothing behind its line end.
    auto const boundary = '\n' + rowMark;
    auto from = pending.size() < boundary.size() ? 0 : pending.size() - boundary.size();
    pending += bytes;
    std::size_t begin = 0;
    for (;;) {
        auto const end = pending.find(boundary, std::max(from, begin));
        if (end == std::string::npos)
            break;
        readRow(std::string_view(pending).substr(begin, end - begin));
        begin = end + 1;
    }
    pending.erase(0, begin);
    if (pending.starts_with(rowMark + "end ") && pending.ends_with('\n'))
        readRow(std::string_view(pending).substr(0, pending.size() - 1));
    else if (pending.size() > maxRowBytes)
        state = State::failed;
}

void SurveyReader::readRow(std::string_view row)
{
    if (state != State::reading)
        return;
    if (!row.starts_with(rowMark)) {
        // Words of a start file of the host, before the first row.
        if (stray.empty())
            stray = row.substr(0, maxRowBytes);
        return;
    }
    row.remove_prefix(rowMark.size());
    if (row.starts_with("end "))
        state = row == "end 0" ? State::complete : State::failed;
    else
        addNode(row);
}

void SurveyReader::addNode(std::string_view row)
{
    SurveyNode node{.kind = kindOf(takeWord(row))};
    auto const size = takeWord(row);
    node.mtime = takeWord(row);
    std::from_chars(size.data(), size.data() + size.size(), node.size);
    auto const pathEnd = std::min(row.find('\0'), row.size());
    node.target = row.substr(std::min(pathEnd + 1, row.size()));
    auto path = row.substr(0, pathEnd);
    if (!path.starts_with("./")) {
        state = State::failed;
        return;
    }
    path.remove_prefix(2);
    auto const nameEnd = std::min(path.find('/'), path.size());
    node.path = path.substr(std::min(nameEnd + 1, path.size()));
    addToSurvey(result.parts[std::string(path.substr(0, nameEnd))], node, detail);
}

} // namespace tw
