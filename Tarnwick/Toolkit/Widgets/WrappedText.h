#pragma once

#include <QStringList>
#include <QWidget>

namespace tw {

/// A text on up to three lines, as wide as it is given. A longer text ends in an ellipsis and is whole in the tool tip.
class WrappedText final : public QWidget {
    Q_OBJECT

public:
    static constexpr int mostLines = 3;

    explicit WrappedText(QWidget *parent = nullptr);

    void setText(QString const &text);

    QString const &text() const noexcept { return whole; }

    /// The lines as they are painted.
    QStringList lines() const { return linesIn(width()); }

    bool hasHeightForWidth() const override { return true; }

    int heightForWidth(int width) const override;

    /// The width of the whole text on one line.
    int naturalWidth() const;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QStringList linesIn(int width) const;

    QString whole;
};

} // namespace tw
