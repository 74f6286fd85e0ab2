#include "TWCore/Model/FileOperationError.h"
#include "tests/support/BrowserTest.h"
#include "tests/support/ScriptedWriter.h"

namespace tw::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class BrowserWritesTest : public BrowserTest {
protected:
    BrowserWritesTest()
    {
        provider = writer;
        writer->usefulDepth = 1;
        useStore();
    }

    void know(std::vector<std::string> const &paths)
    {
        for (auto const &path : paths)
            openCold(path, {file("a")});
    }

    Started<void> begin(Task<void> write)
    {
        auto started = loop.start(std::move(write));
        loop.drain();
        return started;
    }

    void succeed()
    {
        writer->writes.back().succeed();
        loop.drain();
    }

    std::vector<std::string> remembered(std::vector<std::string> const &paths)
    {
        std::vector<std::string> result;
        for (auto const &path : paths) {
            if (get(browser->cached(path)))
                result.push_back(path);
        }
        return result;
    }

    std::vector<std::string> stored() const
    {
        std::vector<std::string> result;
        for (auto const &[key, row] : store->rows)
            result.push_back(key.second);
        return result;
    }

    std::shared_ptr<ScriptedWriter> const writer = std::make_shared<ScriptedWriter>();
};

TEST_F(BrowserWritesTest, aNewFolderMakesItsParentUnknown)
{
    know({"/srv", "/other"});
    auto const made = begin(browser->makeDirectory("/srv/new/"));
    EXPECT_EQ(writer->writes.back().what, "makeDirectory /srv/new");
    EXPECT_THAT(remembered({"/srv"}), ElementsAre("/srv")) << "nothing has changed so far";
    succeed();
    made.value();
    EXPECT_THAT(remembered({"/srv", "/other"}), ElementsAre("/other"));
    EXPECT_THAT(stored(), ElementsAre("/other"));
}

TEST_F(BrowserWritesTest, removedFoldersAreForgottenWithAllBelowThemAndTheirParents)
{
    std::vector<std::string> const paths{"/a", "/a/x", "/a/x/deep/er", "/a/xy", "/b", "/b/y", "/c"};
    know(paths);
    auto const removed = begin(browser->remove({"/a/x", "/b/y"}));
    EXPECT_EQ(writer->writes.back().what, "remove /a/x /b/y");
    succeed();
    removed.value();
    EXPECT_THAT(remembered(paths), ElementsAre("/a/xy", "/c"));
    EXPECT_THAT(stored(), ElementsAre("/a/xy", "/c"));
}

TEST_F(BrowserWritesTest, aRenamedFolderIsForgottenAtBothOfItsPlaces)
{
    std::vector<std::string> const paths{"/a", "/a/x", "/a/x/deep", "/b", "/b/y", "/b/y/old", "/c"};
    know(paths);
    auto const renamed = begin(browser->rename("/a/x", "/b/y"));
    EXPECT_EQ(writer->writes.back().what, "rename /a/x /b/y");
    succeed();
    renamed.value();
    EXPECT_THAT(remembered(paths), ElementsAre("/c"));
    EXPECT_THAT(stored(), ElementsAre("/c"));
}

TEST_F(BrowserWritesTest, movedFoldersAreForgottenAtAllTheirPlaces)
{
    std::vector<std::string> const paths{"/a", "/a/x", "/a/x/deep", "/b", "/b/x", "/c"};
    know(paths);
    auto const moved = begin(browser->moveAll({{"/a/x/", "/b/x"}}, FileSystemWriter::Existing::stays));
    EXPECT_EQ(writer->writes.back().what, "moveAll /a/x /b/x");
    succeed();
    moved.value();
    EXPECT_THAT(remembered(paths), ElementsAre("/c"));
    EXPECT_THAT(stored(), ElementsAre("/c"));
}

TEST_F(BrowserWritesTest, whatIsDeletedForGoodIsForgotten)
{
    know({"/a", "/a/x", "/c"});
    begin(browser->removePermanently({"/a/x"}));
    EXPECT_EQ(writer->writes.back().what, "removePermanently /a/x");
    succeed();
    EXPECT_THAT(remembered({"/a", "/a/x", "/c"}), ElementsAre("/c"));
}

TEST_F(BrowserWritesTest, whatATransferHasWrittenIsForgotten)
{
    std::vector<std::string> const paths{"/a", "/a/x", "/a/x/deep", "/a/y"};
    know(paths);
    get(browser->wroteInto("/a/", {"x"}));
    EXPECT_THAT(remembered(paths), ElementsAre("/a/y"));
    EXPECT_THAT(stored(), ElementsAre("/a/y"));
}

TEST_F(BrowserWritesTest, thousandsOfNamesAreForgottenWithAllBelowTheirFolder)
{
    know({"/a", "/a/other", "/c"});
    std::vector<std::string> names;
    for (int index = 0; index < 5000; ++index)
        names.push_back(std::to_string(index));
    get(browser->wroteInto("/a", names));
    EXPECT_THAT(remembered({"/a", "/a/other", "/c"}), ElementsAre("/c"));
    EXPECT_THAT(stored(), ElementsAre("/c"));
}

TEST_F(BrowserWritesTest, theFactsAboutAFolderAreThoseOfThePlaceItself)
{
    know({"/a"});
    auto const facts = get(browser->factsAbout("/a/", {"x"}));
    EXPECT_EQ(facts.realPath, "/a");
    EXPECT_EQ(facts.taken.front().name, "x");
    EXPECT_THAT(remembered({"/a"}), ElementsAre("/a"));
}

TEST_F(BrowserWritesTest, whatIsWrittenInTheRootIsForgottenThere)
{
    know({"/", "/a"});
    begin(browser->makeDirectory("/new"));
    succeed();
    EXPECT_THAT(remembered({"/", "/a"}), ElementsAre("/a"));
}

TEST_F(BrowserWritesTest, aWriteThatFailedMayHaveDonePartOfItAndIsForgottenToo)
{
    know({"/a", "/a/x"});
    auto const removed = begin(browser->remove({"/a/x", "/a/y"}));
    writer->writes.back().fail(std::make_exception_ptr(FileOperationError::Failed("delete", "/a/y", "denied")));
    loop.drain();
    EXPECT_THROW(removed.value(), FileOperationError::Failed);
    EXPECT_THAT(remembered({"/a", "/a/x"}), IsEmpty());
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(BrowserWritesTest, aWriteThatIsCancelledIsForgottenToo)
{
    know({"/a"});
    auto const made = begin(browser->makeDirectory("/a/new"));
    made.stop();
    loop.drain();
    EXPECT_THROW(made.value(), Cancelled);
    EXPECT_THAT(remembered({"/a"}), IsEmpty());
}

TEST_F(BrowserWritesTest, aListingFromBeforeTheEndOfAWriteDoesNotBringBackWhatWas)
{
    know({"/a"});
    get(browser->refresh("/a"));
    auto const removed = begin(browser->remove({"/a/x"}));
    auto const meanwhile = open("/a/x/deep");
    succeed();
    auto listings = one("/a", {directory("x")});
    listings.merge(one("/a/x", {directory("deep")}));
    listings.merge(one("/a/y", {file("b")}));
    answerWith(std::move(listings));
    EXPECT_THAT(remembered({"/a", "/a/x", "/a/y"}), ElementsAre("/a/y"));

    answer({file("was there")});
    EXPECT_FALSE(meanwhile.isDone()) << "the folder is read again";
    answerWith(Listings{});
    EXPECT_THROW(meanwhile.value(), BrowserError::NotADirectory);
    EXPECT_THAT(stored(), ElementsAre("/a/y"));
}

TEST_F(BrowserWritesTest, aPlaceWithoutAWriterRefuses)
{
    provider = std::make_shared<ScriptedProvider>();
    makeBrowser({});
    auto const made = begin(browser->makeDirectory("/new"));
    try {
        made.value();
        FAIL() << "a place that cannot be written was written";
    } catch (FileOperationError::Unsupported const &error) {
        EXPECT_STREQ(error.what(), "not supported: that destination is read-only");
    }
}

} // namespace
} // namespace tw::test
