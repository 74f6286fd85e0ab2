// Another program that files are dragged to and from: a small window in the upper left corner of the screen.
// Argument: a file that the mouse draws out of it. What is dragged over it and dropped on it is written a line each.

#include <QApplication>
#include <QDrag>
#include <QDropEvent>
#include <QFile>
#include <QLabel>
#include <QMimeData>
#include <QUrl>

#include <iostream>

namespace {

/// How many of the files that are offered can be read.
std::string readable(QMimeData const &data)
{
    int count = 0;
    qint64 bytes = 0;
    for (auto const &url : data.urls()) {
        QFile file(url.toLocalFile());
        count += file.open(QIODevice::ReadOnly) ? 1 : 0;
        bytes += file.isOpen() ? file.readAll().size() : 0;
    }
    return std::to_string(data.urls().size()) + " offered, " + std::to_string(count) + " readable, " +
           std::to_string(bytes) + " bytes";
}

class Partner final : public QLabel {
public:
    explicit Partner(QString offered) : file(std::move(offered))
    {
        setWindowFlag(Qt::X11BypassWindowManagerHint);
        setGeometry(0, 0, 120, 80);
        setAcceptDrops(true);
    }

protected:
    void dragEnterEvent(QDragEnterEvent *event) override
    {
        if (event->source() != this)
            event->acceptProposedAction();
    }

    void dragMoveEvent(QDragMoveEvent *event) override
    {
        std::cout << "over: " << readable(*event->mimeData()) << std::endl;
        event->acceptProposedAction();
    }

    void dragLeaveEvent(QDragLeaveEvent * /*event*/) override { std::cout << "left" << std::endl; }

    void dropEvent(QDropEvent *event) override
    {
        std::cout << "dropped: " << readable(*event->mimeData()) << std::endl;
        event->acceptProposedAction();
    }

    void mousePressEvent(QMouseEvent * /*event*/) override {}

    void mouseMoveEvent(QMouseEvent * /*event*/) override
    {
        auto *const drag = new QDrag(this);
        auto *const data = new QMimeData;
        data->setUrls({QUrl::fromLocalFile(file)});
        drag->setMimeData(data);
        connect(drag, &QDrag::actionChanged, this, [](Qt::DropAction action) {
            if (action != Qt::IgnoreAction)
                std::cout << "accepted" << std::endl;
        });
        drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::CopyAction);
        std::cout << "drag over" << std::endl;
    }

private:
    QString const file;
};

} // namespace

int main(int count, char **arguments)
{
    QApplication application(count, arguments);
    Partner partner(count > 1 ? QString::fromLocal8Bit(arguments[1]) : QString());
    partner.show();
    std::cout << "ready" << std::endl;
    return QApplication::exec();
}
