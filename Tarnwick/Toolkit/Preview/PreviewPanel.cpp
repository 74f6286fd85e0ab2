#include "Tarnwick/Toolkit/Preview/PreviewPanel.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Toolkit/Appearance/Wording.h"
#include "Tarnwick/Toolkit/Preview/PictureView.h"
#include "Tarnwick/Toolkit/Widgets/ElidedLabel.h"

#include <QEvent>
#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QVBoxLayout>

#include <algorithm>

namespace tw {

namespace {

constexpr int margin = PictureView::margin;

/// The pixels stay those of the decoder, which the image holds on to.
QImage imageOf(std::shared_ptr<Picture const> const &picture)
{
    constexpr int bytesPerPixel = 4;
    auto *const owner = new std::shared_ptr(picture);
    return QImage(
        reinterpret_cast<uchar const *>(picture->pixels.data()), picture->width, picture->height,
        picture->width * bytesPerPixel, QImage::Format_RGBA8888,
        [](void *held) { delete static_cast<std::shared_ptr<Picture const> *>(held); }, owner);
}

} // namespace

PreviewPanel::PreviewPanel(std::shared_ptr<PreviewController> controller, SideOf sideOf)
    : QWidget(sideOf(PaneSide::right)),
      previews(std::move(controller)),
      sides(std::move(sideOf)),
      name(new ElidedLabel(this)),
      facts(new ElidedLabel(this)),
      body(new QStackedWidget(this)),
      label(new QLabel(this)),
      text(new QPlainTextEdit(this)),
      image(new PictureView(this))
{
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
    setFocusPolicy(Qt::NoFocus);
    setContextMenuPolicy(Qt::PreventContextMenu);
    setAccessibleName(Wording::shown("Preview"));
    layOut();
    applyFonts();
    hide();
    previews->attach(*this);
}

PreviewPanel::~PreviewPanel()
{
    previews->detach();
}

void PreviewPanel::layOut()
{
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(name);
    column->addWidget(facts);
    column->addWidget(body, 1);
    label->setAlignment(Qt::AlignCenter);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setMargin(margin);
    text->setReadOnly(true);
    text->setTextInteractionFlags(Qt::NoTextInteraction);
    text->setFocusPolicy(Qt::NoFocus);
    text->setFrameShape(QFrame::NoFrame);
    text->setUndoRedoEnabled(false);
    text->document()->setDocumentMargin(margin);
    for (auto *const each :
         {static_cast<QWidget *>(label), static_cast<QWidget *>(text), static_cast<QWidget *>(image)})
        body->addWidget(each);
    facts->showActive(false);
}

void PreviewPanel::applyFonts()
{
    auto bold = font();
    bold.setBold(true);
    name->setFont(bold);
    text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
}

void PreviewPanel::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        applyFonts();
}

void PreviewPanel::openPreview(PaneSide over)
{
    lieOver(sides(over));
    showPreview({});
    show();
    raise();
    layout()->activate(); // so that the room is known
}

void PreviewPanel::lieOver(QWidget *side)
{
    if (parentWidget())
        parentWidget()->removeEventFilter(this);
    setParent(side);
    side->installEventFilter(this);
    setGeometry(side->rect());
}

bool PreviewPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == parentWidget() && event->type() == QEvent::Resize)
        setGeometry(parentWidget()->rect());
    return QWidget::eventFilter(watched, event);
}

void PreviewPanel::closePreview()
{
    hide();
    showPreview({}); // what was on show takes memory
}

void PreviewPanel::showPreview(PreviewContent const &content)
{
    name->setText(QString::fromStdString(onOneLine(content.name)));
    facts->setText(Wording::shown(content.facts));
    std::visit([&](auto const &shown) { showBody(shown, content.detail); }, content.body);
}

void PreviewPanel::showBody(Text const &shown, Detail /*detail*/)
{
    label->setText(Wording::shownInLines(shown));
    body->setCurrentWidget(label);
    text->clear();
    image->setPicture({});
}

void PreviewPanel::showBody(PreviewContent::Writing const &shown, Detail /*detail*/)
{
    text->setPlainText(QString::fromStdString(shown.text));
    body->setCurrentWidget(text);
    image->setPicture({});
}

void PreviewPanel::showBody(std::shared_ptr<Picture const> const &shown, Detail detail)
{
    image->setPicture(imageOf(shown),
                      detail == Detail::little ? PictureView::Growth::toRoom : PictureView::Growth::none);
    body->setCurrentWidget(image);
    text->clear();
}

PictureBounds PreviewPanel::previewRoom() const
{
    auto const pixels = [this](int length) {
        return std::clamp(static_cast<int>((length - 2 * margin) * devicePixelRatioF()), 1, PictureBounds::most);
    };
    return {.width = pixels(body->width()), .height = pixels(body->height())};
}

QString PreviewPanel::words() const
{
    return body->currentWidget() == label ? label->text() : QString();
}

QString PreviewPanel::writing() const
{
    return body->currentWidget() == text ? text->toPlainText() : QString();
}

PictureView const *PreviewPanel::picture() const
{
    return body->currentWidget() == image ? image : nullptr;
}

} // namespace tw
