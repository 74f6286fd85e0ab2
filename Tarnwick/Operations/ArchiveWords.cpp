#include "Tarnwick/Operations/ArchiveWords.h"

#include "TWCore/Archives/ArchiveTooLarge.h"
#include "TWCore/Archives/UnpackRoom.h"
#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Connections/OpenArchive.h"
#include "Tarnwick/Operations/CountPhrase.h"

namespace tw::ArchiveWords {

namespace {

using Names = std::vector<std::string>;

std::string nameOrCount(Names const &names)
{
    return names.size() == 1 ? onOneLine(names.front()) : countPhrase(names.size());
}

} // namespace

Names membersOf(Operands const &what)
{
    auto members = what.paths();
    for (auto &member : members)
        member.erase(0, 1);
    return members;
}

Text objectionToChange(Operands const &where, Text changing)
{
    if (where.archive->outer())
        return "an archive inside another one cannot be changed";
    return where.archive->isChangeable() ? Text() : std::move(changing);
}

Dialogs::Confirmation replaceAt(std::string const &place, Names const &taken)
{
    return {.title = "Replace " + nameOrCount(taken) + "?",
            .message = "Already in " + place + ":\n" + Dialogs::describe(taken, mostNames),
            .okTitle = "Replace",
            .danger = Dialogs::Danger::destructive};
}

Dialogs::Confirmation replaceIn(std::string const &archive, Names const &taken)
{
    return {.title = "Replace " + nameOrCount(taken) + " in the archive?",
            .message = "Already inside " + onOneLine(archive) + ":\n" + Dialogs::describe(taken, mostNames),
            .okTitle = "Replace",
            .danger = Dialogs::Danger::destructive};
}

Dialogs::Confirmation deleteFrom(std::string const &archive, Names const &names)
{
    return {.title = "Delete " + nameOrCount(names) + " from " + onOneLine(archive) + "?",
            .message = "This rewrites the archive. There is no Trash for what is inside one.\n\n" +
                       Dialogs::describe(names, mostNames),
            .okTitle = "Delete",
            .danger = Dialogs::Danger::destructive};
}

Dialogs::Confirmation unpackAllOf(std::string const &what, ArchiveTooLarge const &tooLarge)
{
    auto message = "Unpacked it takes " + UnpackRoom::inWords(tooLarge.bytes);
    message += tooLarge.free ? ". " + UnpackRoom::inWords(*tooLarge.free) + " are free there." : ".";
    return {.title = what + "?",
            .message = message + "\n\nSome archives are made to fill a disk.",
            .okTitle = "Unpack",
            .danger = Dialogs::Danger::destructive};
}

} // namespace tw::ArchiveWords
