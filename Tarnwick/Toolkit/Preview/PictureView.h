#pragma once

#include <QImage>
#include <QWidget>

namespace tw {

/// One picture in the middle of its room, at its own size or smaller.
class PictureView final : public QWidget {
public:
    explicit PictureView(QWidget *parent = nullptr);

    void setPicture(QImage picture);

    QImage const &picture() const noexcept { return image; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QImage image;
};

} // namespace tw
