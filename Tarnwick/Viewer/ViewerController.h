#pragma once

#include "TWCore/Async/Outcome.h"
#include "Tarnwick/Viewer/LineCounts.h"
#include "Tarnwick/Viewer/RowPager.h"
#include "Tarnwick/Viewer/SearchCourse.h"
#include "Tarnwick/Viewer/SearchWish.h"
#include "Tarnwick/Viewer/ViewerDisplay.h"
#include "Tarnwick/Viewer/ViewerSubject.h"
#include "Tarnwick/Viewer/ViewerTarget.h"

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace tw {

/// A file of any size on a screen: which piece of it is in memory, which rows of it are on show, and what is read next.
///
/// One read is under way at a time. A jump supersedes it; a further chunk at one of the ends of the window does not.
/// What was shown stays when a read fails, and the status line says why.
///
/// Threads: main context only.
/// Lifetime: shared; its tasks hold it weakly. The display outlives it or detaches.
class ViewerController : public std::enable_shared_from_this<ViewerController> {
public:
    ViewerController(std::shared_ptr<Executor> mainContext, ViewerSubject subject);
    ~ViewerController();

    ViewerController(ViewerController const &) = delete;
    ViewerController &operator=(ViewerController const &) = delete;

    void attach(ViewerDisplay &shown);

    void detach() { display = nullptr; }

    ViewerSubject const &subject() const noexcept { return of; }

    /// Reads the beginning. To be called once.
    void start();

    /// The room that there is, in cells.
    void resize(int rows, int columns);

    void perform(ViewerAction action);

    /// Down, or up if it is negative.
    void scrollRows(int rows);
    void scrollColumns(int columns);

    /// `share` of the file lies before the first row then.
    void scrollTo(double share);

    void goTo(ViewerTarget target);
    void showAs(ViewerMode mode);
    void readAs(TextDecoding::Encoding encoding);
    void select(ViewerPlace from, ViewerPlace to);

    /// Looks for it from the rows on show on, round the file.
    void find(SearchWish const &what);

    /// The image is shown larger than it was decoded: it is decoded again, pixel by pixel as far as may be.
    void refineImage();

    /// A file is followed only while somebody can see it.
    void setOnScreen(bool isSeen);

    std::shared_ptr<Executor> const &context() const noexcept { return executor; }

    /// More is not copied at a time, and less than a window anyway.
    static constexpr std::size_t mostCopiedCharacters = 16U << 20U;

private:
    enum class Purpose { jump, append, prepend };

    struct Read {
        Purpose purpose;
        std::int64_t offset;
        std::size_t length;
        std::function<void()> thenGo = {}; ///< of a jump: puts the rows where they were wanted
    };

    template <class T>
    using Then = std::function<void(std::optional<T>, std::exception_ptr const &)>;

    template <class T>
    static Task<void> waitFor(std::weak_ptr<ViewerController> weak, std::uint64_t wish, Task<T> work, Then<T> then);
    template <class T>
    void begin(Task<T> work, Then<T> then);

    /// Ends the read that is under way.
    void giveUp();
    void look(std::function<void()> then);
    void looked(ViewedFile::Facts facts, std::function<void()> const &then);
    void jump(std::int64_t offset, std::function<void()> thenGo);
    void read(Read what);
    void arrived(Read const &what, std::string bytes);
    void replaceWith(Read const &what, std::string bytes);
    void prepend(Read const &what, std::string bytes);
    void nothingThere(Read const &what);
    void readImage();
    void imageArrived(PictureReading::Result result);
    void finerImageArrived(PictureReading::Result result);
    PictureBounds finestImage() const;
    bool performOnImage(ViewerAction action);
    void findAgain(FileSearch::Which which);
    void search(SearchCourse course);
    void showProgress(std::int64_t searched);
    void cancelSearch();
    FileSearch::Part partAtHand() const;
    void showMatch(FileSearch::Match found, Text const &words);
    void selectMatch(std::int64_t offset, Text const &words);
    std::int64_t endOfMatch(std::int64_t offset) const;
    void toggleFollowing();
    void followOrNot();
    void endFollowing();
    static Task<void> follow(std::weak_ptr<ViewerController> weak, std::shared_ptr<ViewedFile> file,
                             std::optional<ViewedFile::Facts> known);
    void followed(ViewedFile::Facts const &facts);
    void catchUp();
    void fail(Text words);
    void jumpToStart();
    void jumpToEnd();
    void jumpTo(std::int64_t offset);
    void goToLine(std::int64_t number);
    void goBehindLineEnds(std::int64_t from, std::int64_t count);
    void moveTo(ViewerPlace place);
    void readAround(int rowsOnShow);
    void layOutAgain();
    void copySelection();
    void show();

    std::shared_ptr<Executor> const executor;
    ViewerSubject const of;
    ViewerDisplay *display = nullptr;

    FileWindow window;
    ViewedLines lines{window};
    RowPager pager{window, lines};
    LineCounts counts;
    std::int64_t totalSize;
    bool reachedEnd = false;
    bool isEncodingChosen = false; ///< by hand
    bool mayRead = false;          ///< it is a file: the reading of a pipe would not end
    bool hasStarted = false;       ///< something has been read

    bool showsImage = false; ///< instead of the rows
    std::shared_ptr<Picture const> picture;
    bool isRefined = false; ///< or was not to be had

    ViewerPlace top;
    int rowCount = 1;
    int columnCount = 80;
    int leftColumn = 0;
    ViewerPlace selectedFrom;
    ViewerPlace selectedTo;
    FileSearch::Sought sought;         ///< what was looked for last; no pattern: nothing
    std::optional<std::int64_t> match; ///< where it was found last
    bool isSearching = false;
    Text notice; ///< a failure, instead of the status; empty: none. Nothing is read ahead until the user does something
    Text remark; ///< instead of the status, until the rows move

    bool isFollowed = false;
    bool isOnScreen = true;
    bool staysAtEnd = false; ///< the rows move on with a file that is followed
    std::optional<ViewedFile::Facts> followedAs;
    std::stop_source following;

    std::uint64_t wish = 0; ///< changes with each read, so that the answer to an earlier one is dropped
    std::optional<Purpose> underWay;
    std::stop_source stop;
};

template <class T>
Task<void> ViewerController::waitFor(std::weak_ptr<ViewerController> weak, std::uint64_t asked, Task<T> work,
                                     Then<T> then)
{
    auto outcome = co_await outcomeOf(std::move(work));
    auto const self = weak.lock();
    if (!self || self->wish != asked)
        co_return;
    self->underWay.reset();
    then(std::move(outcome.value), outcome.failure);
}

template <class T>
void ViewerController::begin(Task<T> work, Then<T> then)
{
    stop.request_stop();
    stop = {};
    ++wish;
    isSearching = false;
    spawn({executor, stop.get_token()}, waitFor<T>(weak_from_this(), wish, std::move(work), std::move(then)));
}

} // namespace tw
