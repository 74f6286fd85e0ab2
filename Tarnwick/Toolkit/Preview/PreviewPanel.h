#pragma once

#include "Tarnwick/Preview/PreviewController.h"

#include <QStackedWidget>
#include <QWidget>

#include <functional>
#include <memory>

class QLabel;
class QPlainTextEdit;

namespace tw {

class ElidedLabel;
class PictureView;

/// What is in the file under the cursor, over the pane that is not the active one.
///
/// It never takes the keyboard: the cursor goes on in its pane, and the panel follows.
///
/// Lifetime: `sideOf` answers the widgets that it lies over, which outlive it.
class PreviewPanel final : public QWidget, private PreviewDisplay {
public:
    using SideOf = std::function<QWidget *(PaneSide)>;

    PreviewPanel(std::shared_ptr<PreviewController> controller, SideOf sideOf);
    ~PreviewPanel() override;

    bool eventFilter(QObject *watched, QEvent *event) override;

    // What is on show, for tests.
    ElidedLabel const &nameLine() const { return *name; }

    ElidedLabel const &factsLine() const { return *facts; }

    QString words() const;
    QString writing() const;
    PictureView const *picture() const;

protected:
    void changeEvent(QEvent *event) override;

private:
    void openPreview(PaneSide over) override;
    void closePreview() override;
    void showPreview(PreviewContent const &content) override;
    PictureBounds previewRoom() const override;

    void layOut();
    void lieOver(QWidget *side);
    void applyFonts();
    using Detail = PreviewContent::Detail;

    void showBody(Text const &shown, Detail detail);
    void showBody(PreviewContent::Writing const &shown, Detail detail);
    void showBody(std::shared_ptr<Picture const> const &shown, Detail detail);

    std::shared_ptr<PreviewController> const previews;
    SideOf const sides;
    ElidedLabel *const name;
    ElidedLabel *const facts;
    QStackedWidget *const body;
    QLabel *const label;
    QPlainTextEdit *const text;
    PictureView *const image;
};

} // namespace tw
