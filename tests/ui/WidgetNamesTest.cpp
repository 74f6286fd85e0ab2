#include "Tarnwick/Toolkit/Commands/ToolBarDialog.h"
#include "Tarnwick/Toolkit/Dialogs/ApplicationSheet.h"
#include "Tarnwick/Toolkit/Dialogs/ConflictSheet.h"
#include "Tarnwick/Toolkit/Dialogs/LoginSheet.h"
#include "Tarnwick/Toolkit/Dialogs/PackSheet.h"
#include "Tarnwick/Toolkit/Dialogs/ProgressSheet.h"
#include "Tarnwick/Toolkit/Dialogs/PromptSheet.h"
#include "Tarnwick/Toolkit/Dialogs/QuestionSheet.h"
#include "Tarnwick/Toolkit/Dialogs/WordsSheet.h"
#include "Tarnwick/Toolkit/Table/ColumnsDialog.h"
#include "Tarnwick/Toolkit/Viewer/ViewerWindow.h"
#include "tests/ui/QtLoop.h"
#include "tests/ui/WindowTest.h"

#include <QAccessible>
#include <QProgressBar>
#include <gmock/gmock.h>

namespace tw::test {
namespace {

using ::testing::IsEmpty;

/// What a screen reader would have to call by its kind only: "edit", "list", "progress bar".
class WidgetNamesTest : public WindowTest {
protected:
    static bool isRead(QWidget const &widget)
    {
        return (widget.focusPolicy() & Qt::TabFocus) != 0 || qobject_cast<QProgressBar const *>(&widget);
    }

    static std::vector<std::string> namelessIn(QWidget &window)
    {
        std::vector<std::string> nameless;
        for (auto *const each : window.findChildren<QWidget *>()) {
            auto *const known =
                each->isVisible() && isRead(*each) ? QAccessible::queryAccessibleInterface(each) : nullptr;
            if (known && known->text(QAccessible::Name).isEmpty())
                nameless.push_back(each->metaObject()->className() + std::string(" in ") +
                                   window.windowTitle().toStdString());
        }
        return nameless;
    }

    static void expectNames(QDialog *dialog)
    {
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->show();
        EXPECT_THAT(namelessIn(*dialog), IsEmpty());
        dialog->close();
        processPosted();
    }
};

TEST_F(WidgetNamesTest, theWindowAndAViewerNameWhatTabReaches)
{
    left.file("file", "text");
    open();
    EXPECT_THAT(namelessIn(*window), IsEmpty());
    press(Qt::Key_Down);
    press(Qt::Key_F3);
    ASSERT_FALSE(window->openViewers().empty());
    EXPECT_THAT(namelessIn(*window->openViewers().front()), IsEmpty());
}

TEST_F(WidgetNamesTest, everyDialogNamesWhatTabReaches)
{
    open();
    auto *const over = window.get();
    expectNames(new PromptSheet({.title = "New folder", .message = {}, .initial = {}, .okTitle = "Create"}, over));
    expectNames(new PackSheet({.title = "Pack",
                               .message = {},
                               .directory = "/x",
                               .stem = "a",
                               .formats = {ArchiveFormat::zip, ArchiveFormat::tarGz}},
                              over));
    using Kind = LoginQuestion::Kind;
    for (auto const kind : {Kind::password, Kind::hostKey, Kind::confirm, Kind::other})
        expectNames(new LoginSheet({.kind = kind,
                                    .host = "box",
                                    .prompt = "Password:",
                                    .keyPath = {},
                                    .keyType = {},
                                    .fingerprint = {},
                                    .attempt = 2,
                                    .canBeRemembered = true},
                                   over));
    expectNames(new ApplicationSheet({.file = "a.txt", .others = {{.identifier = "e.desktop", .name = "E"}}}, over));
    expectNames(new ConflictSheet({.title = "Copy", .message = {}, .names = {{{.name = "a"}, {.name = "a"}}}}, over));
    expectNames(new QuestionSheet({.title = "Delete?", .message = {}, .okTitle = "Delete"}, over));
    expectNames(QuestionSheet::ofError(tw::Text("failed"), "words", over));
    expectNames(new WordsSheet(tw::Text("Details"), "words", over));
    expectNames(new ToolBarDialog(ToolBarLayout::usual(), over));
    expectNames(new ColumnsDialog({}, over));
    auto const works = std::make_shared<JobList>();
    auto const work = works->begin("Copy a", [] {});
    expectNames(new ProgressSheet(works, work, over));
    works->end(work);
}

} // namespace
} // namespace tw::test
