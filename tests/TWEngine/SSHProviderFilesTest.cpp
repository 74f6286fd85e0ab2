#include "TWCore/Async/Cancelled.h"
#include "TWCore/Model/FileOperationError.h"
#include "TWCore/Model/ReadError.h"
#include "TWEngine/SSH/DownloadEnd.h"
#include "TWEngine/Transfer/HostSlots.h"
#include "tests/support/DiskRows.h"
#include "tests/support/SSHProviderTest.h"

#include <system_error>

namespace tw::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

/// A file of which no more comes until somebody writes to its other end.
struct EndlessFile {
    explicit EndlessFile(std::string where) : path(std::move(where))
    {
        if (::mkfifo(path.c_str(), 0600) != 0)
            throw std::system_error(errno, std::system_category(), path);
        end = FileDescriptor(::open(path.c_str(), O_RDWR | O_CLOEXEC));
    }

    std::string const path;
    FileDescriptor end;
};

/// Whole files, there and back.
class SSHProviderFilesTest : public SSHProviderTest {
protected:
    static std::string manyBytes(std::size_t count)
    {
        std::string bytes;
        for (std::size_t index = 0; index < count; ++index)
            bytes += static_cast<char>(index * 7 + index / 256);
        return bytes;
    }
};

TEST_F(SSHProviderFilesTest, aDownloadIsTheFile)
{
    reach();
    auto const bytes = manyBytes(3'000'000);
    auto const provider = connected();
    for (std::string const name : {"plain", "it's", "\xFF \n.x", "-n"}) {
        auto const path = folder.file(name, bytes);
        auto const target = local.file("target", "what was there");
        loop.run(provider->download(path, target));
        EXPECT_EQ(contentOf(target), bytes);
    }
}

TEST_F(SSHProviderFilesTest, whatLooksLikeTheEndOfAFileIsPartOfIt)
{
    reach();
    auto const provider = connected();
    for (std::string const &bytes :
         {std::string(DownloadEnd::words), "x" + std::string(DownloadEnd::words) + std::string(DownloadEnd::words)}) {
        loop.run(provider->download(folder.file("file", bytes), local.path("target")));
        EXPECT_EQ(contentOf(local.path("target")), bytes);
    }
}

TEST_F(SSHProviderFilesTest, aDownloadOfNothing)
{
    reach();
    auto const provider = connected();
    auto const download = loop.start(provider->download(folder.path("none"), local.path("target")));
    finish(download);
    try {
        download.value();
        FAIL() << "there is nothing";
    } catch (ReadError::NotReadable const &failure) {
        EXPECT_EQ(failure.path, folder.path("none"));
        EXPECT_THAT(failure.detail, HasSubstr("No such file or directory"));
    }
    loop.run(provider->download(folder.file("empty"), local.path("target")));
    EXPECT_EQ(contentOf(local.path("target")), "");
}

TEST_F(SSHProviderFilesTest, aDownloadToWhereNothingCanBe)
{
    reach();
    auto const target = local.path("none/target");
    auto const download = loop.start(connected()->download(folder.file("file"), target));
    finish(download);
    try {
        download.value();
        FAIL() << "there is no such folder";
    } catch (ReadError::NotReadable const &failure) {
        EXPECT_EQ(failure.path, target);
        EXPECT_EQ(failure.detail, "cannot create local file");
    }
}

TEST_F(SSHProviderFilesTest, aDownloadToAFullDisk)
{
    reach();
    auto const provider = connected();
    for (std::size_t const size : {10U, 3'000'000U}) {
        auto const path = folder.file("file", manyBytes(size));
        EXPECT_THAT(failureOf(loop.start(provider->download(path, "/dev/full"))), HasSubstr("No space left on device"))
            << size << " bytes";
    }
}

TEST_F(SSHProviderFilesTest, anUploadIsTheFileAndKeepsItsModeAndOwner)
{
    reach();
    auto const bytes = manyBytes(3'000'000);
    auto const provider = connected();
    for (std::string const name : {"plain", "it's", "\xFF \n.x", "-n"}) {
        auto const path = folder.file(name, "what was there");
        ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
        if (::geteuid() == 0)
            ASSERT_EQ(::chown(path.c_str(), 12, 34), 0);
        struct stat before;
        ASSERT_EQ(::stat(path.c_str(), &before), 0);
        loop.run(provider->upload(local.file("source", bytes), path));
        EXPECT_EQ(contentOf(path), bytes);
        struct stat after;
        ASSERT_EQ(::stat(path.c_str(), &after), 0);
        EXPECT_EQ(after.st_mode, before.st_mode);
        EXPECT_EQ(after.st_uid, before.st_uid);
        EXPECT_EQ(after.st_gid, before.st_gid);
        EXPECT_EQ(after.st_ino, before.st_ino);
    }
    EXPECT_THAT(namesOnDisk(folder.path()), UnorderedElementsAre("plain", "it's", "\xFF \n.x", "-n"));
}

TEST_F(SSHProviderFilesTest, anUploadThatFailsLeavesNothing)
{
    reach();
    auto const path = folder.folder("in the way");
    auto const upload = loop.start(connected()->upload(local.file("source", "bytes"), path));
    finish(upload);
    try {
        upload.value();
        FAIL() << "a folder is in the way";
    } catch (FileOperationError::Failed const &failure) {
        EXPECT_EQ(failure.operation, "upload");
        EXPECT_EQ(failure.path, path);
        EXPECT_THAT(failure.detail, HasSubstr("directory"));
    }
    EXPECT_THAT(namesOnDisk(folder.path()), ElementsAre("in the way"));
}

TEST_F(SSHProviderFilesTest, aNameThatACommandCannotSayIsNotTakenForAnother)
{
    reach();
    auto const provider = connected();
    auto const other = folder.file("name", "of another file");
    auto const upload = loop.start(provider->upload(local.file("source", "bytes"), other + "\n"));
    auto const download = loop.start(provider->download(other + "\n", local.path("target")));
    finish(upload);
    finish(download);
    EXPECT_THROW(upload.value(), FileOperationError::Failed);
    EXPECT_THROW(download.value(), ReadError::NotReadable);
    EXPECT_EQ(contentOf(other), "of another file");
    EXPECT_THAT(namesOnDisk(local.path()), ElementsAre("source"));
}

TEST_F(SSHProviderFilesTest, whatIsMadeUpWhileItIsReadIsUploaded)
{
    reach();
    auto const path = folder.path("file");
    loop.run(connected()->upload("/proc/version", path));
    EXPECT_EQ(contentOf(path), contentOf("/proc/version"));
}

TEST_F(SSHProviderFilesTest, anUploadThatIsStoppedLeavesNothing)
{
    // The host takes all that comes and asks for more.
    reach({.loginScript = "#!/bin/sh\ncase $SSH_ORIGINAL_COMMAND in\n*tw-upload*) exec 3<&0; (cat <&3; touch '" +
                          local.path("read") +
                          "'; exec sleep 1000) | /bin/sh -c \"$SSH_ORIGINAL_COMMAND\"; exit;;\nesac\nexec /bin/sh -c "
                          "\"$SSH_ORIGINAL_COMMAND\"\n"});
    auto const provider = connected();
    auto const upload = loop.start(provider->upload(local.file("source", "bytes"), folder.path("file")));
    loop.runUntil([&] {
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
        return namesOnDisk(folder.path()) == std::vector<std::string>{"file.tw-upload"};
    });
    upload.stop();
    finish(upload);
    EXPECT_THROW(upload.value(), Cancelled);
    loop.runUntil([&] {
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
        return namesOnDisk(folder.path()).empty();
    });
}

TEST_F(SSHProviderFilesTest, whatCannotBeReadHereIsNotUploaded)
{
    reach();
    auto const path = folder.file("file", "what was there");
    auto const provider = connected();
    auto const pipe = local.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    for (auto const &source : {local.path("none"), local.folder("folder"), pipe}) {
        auto const upload = loop.start(provider->upload(source, path));
        finish(upload);
        try {
            upload.value();
            FAIL() << source << " is no file";
        } catch (ReadError::NotReadable const &failure) {
            EXPECT_EQ(failure.path, source);
            EXPECT_EQ(failure.detail, "cannot open local file");
        }
    }
    EXPECT_EQ(contentOf(path), "what was there");
    EXPECT_THAT(namesOnDisk(folder.path()), ElementsAre("file"));
}

TEST_F(SSHProviderFilesTest, aClientThatDoesNotStartIsToldInTheWordsOfTheSystem)
{
    auto const provider = keep(std::make_shared<SSHProvider>(
        SSHProvider::Collaborators{.engine = engine, .sshProgram = folder.path("no ssh"), .sockets = sockets}, "host"));
    auto const target = local.path("target");
    EXPECT_THAT(failureOf(loop.start(provider->download("/file", target))), HasSubstr("No such file or directory"));
    EXPECT_THAT(failureOf(loop.start(provider->upload(local.file("source", "x"), "/file"))),
                HasSubstr("No such file or directory"));
}

TEST_F(SSHProviderFilesTest, aTransferHoldsNobodyUpAndEndsWithTheConnection)
{
    reach();
    auto const provider = connected();
    EndlessFile const endless(folder.path("pipe"));
    auto const download = loop.start(provider->download(endless.path, local.path("target")));
    loop.runUntil([&] {
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
        return std::filesystem::exists(local.path("target"));
    });
    EXPECT_EQ(run(provider, "echo beside"), "beside\n");
    loop.run(provider->download(folder.file("file", "second"), local.path("second")));
    EXPECT_EQ(contentOf(local.path("second")), "second");
    EXPECT_FALSE(download.isDone());

    loop.run(provider->disconnect());
    EXPECT_EQ(failureOf(download), "disconnected: shut down");
    EXPECT_FALSE(loop.run(provider->isLive()));
}

TEST_F(SSHProviderFilesTest, fourClientsRunAtOnceAndTheFifthWaits)
{
    reach();
    auto const provider = connected();
    std::vector<std::unique_ptr<EndlessFile>> pipes;
    std::vector<Started<void>> downloads;
    for (std::size_t index = 0; index <= HostSlots::atOnce; ++index) {
        pipes.push_back(std::make_unique<EndlessFile>(folder.path("pipe " + std::to_string(index))));
        downloads.push_back(loop.start(provider->download(pipes.back()->path, local.path(std::to_string(index)))));
    }
    loop.runUntil([&] {
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
        return namesOnDisk(local.path()).size() == HostSlots::atOnce;
    });
    EXPECT_EQ(namesOnDisk(local.path()).size(), HostSlots::atOnce);
    downloads.front().stop();
    loop.runUntil([&] {
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
        return namesOnDisk(local.path()).size() > HostSlots::atOnce;
    });
    loop.run(provider->disconnect());
    for (std::size_t index = 1; index < downloads.size(); ++index)
        EXPECT_EQ(failureOf(downloads[index]), "disconnected: shut down");
    finish(downloads.front());
}

TEST_F(SSHProviderFilesTest, aStoppedTransferEnds)
{
    reach();
    auto const provider = connected();
    EndlessFile const endless(folder.path("pipe"));
    auto const download = loop.start(provider->download(endless.path, local.path("target")));
    loop.drain();
    download.stop();
    finish(download);
    EXPECT_THROW(download.value(), Cancelled);
    EXPECT_EQ(run(provider, "echo behind"), "behind\n");
}

TEST_F(SSHProviderFilesTest, aShellThatRunsNoCommandBringsNoFile)
{
    // As with `exec zsh` in a start file: the command is dropped, and it all ends with success.
    reach({.loginScript = "#!/bin/sh\ncase $SSH_ORIGINAL_COMMAND in\n'cat '*) exec /bin/true;;\nesac\nexec /bin/sh -c "
                          "\"$SSH_ORIGINAL_COMMAND\"\n"});
    auto const provider = connected();
    auto const download = loop.start(provider->download(folder.file("file", "content"), local.path("target")));
    EXPECT_THAT(failureOf(download), HasSubstr("the host has not sent all of the file"));
}

TEST_F(SSHProviderFilesTest, manyTransfers)
{
    reach();
    auto const provider = connected();
    std::vector<Started<void>> downloads;
    std::vector<Started<std::int64_t>> sizes;
    for (int index = 0; index < 10; ++index) {
        auto const path = folder.file(std::to_string(index), std::to_string(index));
        downloads.push_back(loop.start(provider->download(path, local.path(std::to_string(index)))));
        for (int more = 0; more < 5; ++more)
            sizes.push_back(loop.start(provider->fileSize(path)));
    }
    for (auto const &size : sizes) {
        finish(size);
        EXPECT_EQ(size.value(), 1);
    }
    for (std::size_t index = 0; index < downloads.size(); ++index) {
        finish(downloads[index]);
        EXPECT_NO_THROW(downloads[index].value());
        EXPECT_EQ(contentOf(local.path(std::to_string(index))), std::to_string(index));
    }
}

TEST_F(SSHProviderFilesTest, aLineThatBreaksInTheMiddleOfAnUploadSparesTheTarget)
{
    // To the command on the host it is the end of its input.
    reach({.loginScript = "#!/bin/sh\ncase $SSH_ORIGINAL_COMMAND in\n*tw-upload*) exec 3<&0; head -c 1000 <&3 | "
                          "/bin/sh -c \"$SSH_ORIGINAL_COMMAND\"; exit;;\nesac\nexec /bin/sh -c "
                          "\"$SSH_ORIGINAL_COMMAND\"\n"});
    auto const path = folder.file("file", "what was there");
    auto const provider = connected();
    auto const upload = loop.start(provider->upload(local.file("source", manyBytes(100'000)), path));
    finish(upload);
    try {
        upload.value();
        FAIL() << "the line broke";
    } catch (FileOperationError::Failed const &failure) {
        EXPECT_EQ(failure.detail, "not all of the file has arrived");
    }
    EXPECT_EQ(contentOf(path), "what was there");
    EXPECT_THAT(namesOnDisk(folder.path()), ElementsAre("file"));

    loop.run(provider->upload(local.file("source", manyBytes(1000)), path));
    EXPECT_EQ(contentOf(path), manyBytes(1000));
}

TEST_F(SSHProviderFilesTest, aLineThatBreaksInTheMiddleOfADownloadIsTold)
{
    reach();
    auto const provider = connected();
    EndlessFile const endless(folder.path("pipe"));
    // The last bytes are held back: they may be the words behind a file.
    auto const half = "half" + std::string(DownloadEnd::words.size(), 'x');
    ASSERT_EQ(::write(endless.end.get(), half.data(), half.size()), std::ssize(half));
    auto const download = loop.start(provider->download(endless.path, local.path("target")));
    loop.runUntil([&] {
        loop.run(engine.clock()->sleep(std::chrono::milliseconds(1)));
        return contentOf(local.path("target")) == "half";
    });
    line->cut();
    finish(download);
    EXPECT_THROW(download.value(), ReadError::NotReadable);
}

} // namespace
} // namespace tw::test
