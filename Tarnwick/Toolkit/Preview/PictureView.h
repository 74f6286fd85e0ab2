#pragma once

#include <QImage>
#include <QWidget>

namespace tw {

/// One picture in the middle of its room, at its own size or smaller. What stands in for a larger one is enlarged.
class PictureView final : public QWidget {
public:
    explicit PictureView(QWidget *parent = nullptr);

    /// Around a picture that fills the room.
    static constexpr int margin = 8;

    enum class Growth { none, toRoom };

    void setPicture(QImage picture, Growth growth = Growth::none);

    QImage const &picture() const noexcept { return image; }

    /// A picture in little detail.
    bool isStandIn() const noexcept { return growth == Growth::toRoom; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QImage image;
    Growth growth = Growth::none;
};

} // namespace tw
