#include "TWEngine/Archives/ArchiveProvider.h"
#include "TWEngine/Archives/PasswordedWork.h"
#include "tests/support/ArchiveTest.h"
#include "tests/support/Listings.h"

namespace tw::test {
namespace unlockedArchive {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Encrypted archives of the folder "t" with the file "a", and a user with some answers.
class UnlockedArchiveTest : public ArchiveTest {
protected:
    UnlockedArchiveTest()
    {
        folder.folder("t");
        folder.file("t/a", "content");
        shell("7zz a -bd -bso0 -psecret aes.zip -mem=AES256 t; zip -q -r -P secret old.zip t; "
              "7zz a -bd -bso0 -psecret plain.7z t; 7zz a -bd -bso0 -psecret -mhe=on hidden.7z t");
        passwords = std::make_shared<ArchivePasswords>([this](auto question) { return answer(std::move(question)); });
    }

    Task<ArchivePasswords::Password> answer(ArchivePasswords::Question question)
    {
        ArchivePasswords::Password next;
        {
            std::lock_guard const lock(asking);
            questions.push_back(question.archive + " " + std::to_string(question.attempt));
            if (!answers.empty()) {
                next = answers.front();
                answers.erase(answers.begin());
            }
        }
        return given(std::move(next));
    }

    static Task<ArchivePasswords::Password> given(ArchivePasswords::Password password) { co_return password; }

    /// The user forgets what was answered, and so does the program.
    void begin(Names next)
    {
        passwords = std::make_shared<ArchivePasswords>([this](auto question) { return answer(std::move(question)); });
        questions.clear();
        answers = std::move(next);
    }

    std::shared_ptr<ArchiveProvider> provider(TransferEndpoint file)
    {
        return std::make_shared<ArchiveProvider>(
            engine, ArchiveProvider::Archive{.file = std::move(file), .hostLabel = "x", .passwords = passwords},
            tools().ssh);
    }

    std::string read(std::shared_ptr<ArchiveProvider> const &archive)
    {
        auto const reading = loop.start(archive->readChunk("/t/a", 0, 100));
        finish(reading);
        try {
            return reading.value();
        } catch (std::exception const &failure) {
            return failure.what();
        }
    }

    TransferEndpoint file(std::string const &name) const { return here(folder.path(name)); }

    std::mutex asking;
    Names questions; ///< "hidden.7z 1", so far
    Names answers;   ///< for the next questions; then there are none
};

TEST_F(UnlockedArchiveTest, aWrongPasswordIsAskedForAgainAndARightOneIsKept)
{
    auto withoutBsdtar = tools7();
    for (auto const &[name, with] : std::vector<std::pair<std::string, ArchiveTools>>{{"aes.zip", archiveTools()},
                                                                                      {"old.zip", archiveTools()},
                                                                                      {"aes.zip", withoutBsdtar},
                                                                                      {"plain.7z", archiveTools()},
                                                                                      {"hidden.7z", archiveTools()}}) {
        begin({"wrong", "secret"});
        EXPECT_EQ(unpack(file(name), here(local.path("out")), with), "done") << name;
        EXPECT_EQ(contentOf(local.path("out/t/a")), "content") << name;
        EXPECT_THAT(questions, ElementsAre(name + " 1", name + " 2"));
        std::filesystem::remove_all(local.path("out"));
        EXPECT_EQ(extract({"t/a"}, file(name), targetHere(), with), "done") << name;
        EXPECT_EQ(contentOf(local.path("a")), "content") << name;
        std::filesystem::remove(local.path("a"));
        EXPECT_EQ(read(provider(file(name))), "content") << name;
        EXPECT_EQ(questions.size(), 2U) << name;
    }
}

TEST_F(UnlockedArchiveTest, withoutAPasswordNothingIsLeftBehind)
{
    for (auto const *const name : {"aes.zip", "plain.7z", "hidden.7z"}) {
        begin({});
        EXPECT_EQ(unpack(file(name), here(local.path("out"))), "cancelled") << name;
        EXPECT_THAT(arrived(), IsEmpty()) << name;
        EXPECT_EQ(questions.size(), 1U) << name;
    }
    passwords = nullptr;
    EXPECT_THAT(unpack(file("hidden.7z"), here(local.path("out"))), HasSubstr("hidden.7z: it is encrypted"));
    auto onlyUnzip = tools7();
    onlyUnzip.sevenZip.clear();
    EXPECT_THAT(unpack(file("old.zip"), here(local.path("out")), onlyUnzip), HasSubstr("Install the package 7zip."));
    EXPECT_THAT(arrived(), IsEmpty());
}

TEST_F(UnlockedArchiveTest, anArchiveWithHiddenNamesIsChangedAndStaysEncrypted)
{
    begin({"secret"});
    EXPECT_EQ(add({folder.file("new", "n")}, folder.path("hidden.7z"), "t"), "done");
    EXPECT_EQ(remove({"t/a"}, folder.path("hidden.7z")), "done");
    EXPECT_EQ(questions.size(), 1U);
    EXPECT_EQ(names(loop.run(provider(file("hidden.7z"))->fetch("/t", 1, FetchPriority::interactive)).at("/t")),
              Names{"new"});
    begin({});
    EXPECT_EQ(unpack(file("hidden.7z"), here(local.path("out"))), "cancelled");
}

TEST_F(UnlockedArchiveTest, nothingIsAddedUnencryptedBesideEncryptedMembers)
{
    begin({"secret"});
    for (auto const *const name : {"aes.zip", "plain.7z"}) {
        EXPECT_EQ(read(provider(file(name))), "content"); // the password is known now
        auto const before = contentOf(folder.path(name));
        EXPECT_THAT(add({folder.file("new", "n")}, folder.path(name)), HasSubstr("would be added to it unencrypted"));
        EXPECT_TRUE(contentOf(folder.path(name)) == before) << name;
        answers = {"secret"};
    }
}

TEST_F(UnlockedArchiveTest, aMemberThatTheUserHasRefusedIsNotAskedForAgain)
{
    begin({});
    auto const archive = provider(file("aes.zip"));
    EXPECT_EQ(read(archive), "cancelled");
    EXPECT_THAT(read(archive), HasSubstr("it is encrypted"));
    EXPECT_EQ(questions.size(), 1U);
    loop.run(archive->disconnect());
    answers = {"secret"};
    EXPECT_EQ(read(archive), "content");
}

TEST_F(UnlockedArchiveTest, aPasswordReachesTheToolOfAHost)
{
    reach();
    auto const there = connected();
    auto const on = [&](std::string const &name) { return TransferEndpoint::remote(there, folder.path(name)); };
    for (auto const *const name : {"plain.7z", "hidden.7z"}) {
        begin({"wrong", "secret"});
        EXPECT_EQ(read(provider(on(name))), "content") << name;
        EXPECT_EQ(unpack(on(name), TransferEndpoint::remote(there, local.path("out"))), "done") << name;
        EXPECT_EQ(contentOf(local.path("out/t/a")), "content") << name;
        std::filesystem::remove_all(local.path("out"));
        EXPECT_EQ(extract({"t/a"}, on(name), targetHere()), "done") << name;
        std::filesystem::remove(local.path("a"));
        EXPECT_EQ(questions.size(), 2U) << name;
    }
    EXPECT_THAT(arrived(), IsEmpty());
}

TEST_F(UnlockedArchiveTest, noCommandLineHasThePassword)
{
    reach();
    auto const there = connected();
    auto const result = loop.run(PasswordedWork::run(
        engine, tools().ssh, there,
        {.text = "ps -eo args; read -r p; echo \"got $p\"", .token = "none", .password = "pw-8f2c41d7"}));
    EXPECT_THAT(result.output, HasSubstr("got pw-8f2c41d7"));
    EXPECT_EQ(result.output.find("pw-8f2c41d7"), result.output.rfind("pw-8f2c41d7"));
}

} // namespace
} // namespace unlockedArchive
} // namespace tw::test
