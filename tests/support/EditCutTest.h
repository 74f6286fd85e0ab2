#pragma once

#include "TWEngine/Editing/EditedFile.h"
#include "tests/support/DiskRows.h"
#include "tests/support/SSHProviderTest.h"

#include <fstream>

namespace tw::test {

/// Uploads of edited files over a line that is cut after any number of bytes. In place of ssh a script runs the remote
/// command on this machine: what it loses is exact to the byte.
class EditCutTest : public SSHProviderTest {
protected:
    EditCutTest()
    {
        // A session is cut behind the first word of a replacement, which no other request has.
        ssh = scripts.file("ssh", R"sh(#!/bin/bash
case " $* " in *' -O '* | *' -G '*) exit 255 ;; esac
for word; do :; done
read -r what bytes 2>/dev/null <)sh" + scripts.path("cut") +
                                      R"sh(
case $what-$word in
upload-*'cat > '*) head -c "$bytes" | sh -c "$word" ;;
session-'cat '*) exec sh -c "$word" ;;
session-*) perl -e '
  while (sysread(STDIN, $read, 65536)) {
    $all .= $read;
    $from = index($all, "tw_k=");
    $limit = -e $ARGV[1] ? $from + $ARGV[0] : 1e15 if $from >= 0 && !defined $limit;
    $most = length $all;
    $most = $limit if defined $limit && $limit < $most;
    while ($sent < $most) { $sent += syswrite(STDOUT, substr($all, $sent, $most - $sent)) }
    exit if defined $limit && $sent >= $limit;
  }' "$bytes" )sh" + scripts.path("cut") +
                                      R"sh( | sh -c "$word" ;;
*) exec sh -c "$word" ;;
esac
exit 255
)sh");
        ::chmod(ssh.c_str(), 0755);
    }

    std::string sshProgram() const override { return ssh; }

    struct Upload {
        std::size_t bytes; ///< of the new content
        std::string cut;   ///< "session" or "upload": the client that loses the line
        std::size_t places;
        std::size_t most; ///< the line is cut before so many bytes
    };

    /// The file on the host is the old one or the new one after each cut, and the next upload succeeds.
    void expectWholeAfterEveryCut(Upload const &what)
    {
        std::string const old(5000, 'o');
        std::string const saved(what.bytes, 'n');
        auto const path = folder.file("a", old);
        auto const place = EditStaging::Place{.base = local.path("edits")};
        std::size_t lost = 0;
        for (std::size_t index = 0; index < what.places; ++index) {
            folder.file("a", old);
            scripts.file("cut", what.cut + ' ' + std::to_string(index * what.most / what.places));
            auto const provider = connected();
            auto const copy =
                loop.run(EditedFile::fetch(&engine, provider,
                                           EditStaging::make({.connection = "host", .path = path}, place)))
                    .copy;
            std::ofstream(copy.path, std::ios::trunc) << saved;
            auto const put = loop.start(EditedFile::put(&engine, provider, copy));
            finish(put);
            auto const isReplaced = !put.failed() && put.value().outcome.kind == EditCommand::Outcome::Kind::replaced;
            EXPECT_TRUE(contentOf(path) == (isReplaced ? saved : old)) << what.cut << " cut at place " << index;
            lost += isReplaced ? 0 : 1;

            std::filesystem::remove(scripts.path("cut"));
            auto const again = loop.run(EditedFile::put(&engine, provider, copy));
            EXPECT_EQ(again.outcome.kind, EditCommand::Outcome::Kind::replaced) << again.outcome.words;
            EXPECT_TRUE(contentOf(path) == saved);
            EXPECT_THAT(namesOnDisk(folder.path()), testing::ElementsAre("a"));
            loop.run(provider->disconnect());
            EditStaging::remove(copy);
        }
        EXPECT_EQ(lost, what.places) << "every place is before the end";
    }

private:
    TemporaryFolder scripts;
    std::string ssh;
};

} // namespace tw::test
