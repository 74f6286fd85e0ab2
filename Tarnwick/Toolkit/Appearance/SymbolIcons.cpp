#include "Tarnwick/Toolkit/Appearance/SymbolIcons.h"

#include "Tarnwick/Toolkit/Appearance/Contrast.h"

#include <QApplication>
#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>

/// A resource in a static library is left out of the program unless something in it is called. The macro declares what
/// it calls in the namespace around it, so this function stands outside of ours.
static void loadOwnSymbols()
{
    Q_INIT_RESOURCE(icons);
}

namespace tw::SymbolIcons {

namespace {

/// The size at which a theme's picture is looked at.
constexpr int sampleSize = 24;

/// What a large sign needs to be seen.
constexpr double leastContrast = 3;

QString text(std::string_view words)
{
    return QString::fromUtf8(words.data(), static_cast<qsizetype>(words.size()));
}

/// Draws in the colour that text has at that moment, so that it follows the desktop from light to dark.
class SymbolEngine final : public QIconEngine {
public:
    explicit SymbolEngine(QString wanted) : name(std::move(wanted)) {}

    void paint(QPainter *painter, QRect const &rect, QIcon::Mode mode, QIcon::State /*state*/) override
    {
        QFile file(QStringLiteral(":/icons/symbol-%1.svg").arg(name));
        if (!file.open(QIODevice::ReadOnly))
            return;
        auto const group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        auto const color = QApplication::palette().color(group, QPalette::WindowText).name().toUtf8();
        QSvgRenderer renderer(file.readAll().replace("currentColor", color));
        renderer.render(painter, rect);
    }

    QPixmap pixmap(QSize const &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap drawn(size);
        drawn.fill(Qt::transparent);
        QPainter painter(&drawn);
        SymbolEngine::paint(&painter, drawn.rect(), mode, state);
        return drawn;
    }

    QIconEngine *clone() const override { return new SymbolEngine(name); }

private:
    QString const name;
};

/// The colour of a picture as a whole, of what of it is not transparent.
QColor meanColor(QImage const &picture)
{
    qint64 red = 0;
    qint64 green = 0;
    qint64 blue = 0;
    qint64 weight = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            auto const pixel = picture.pixel(x, y);
            red += qint64(qRed(pixel)) * qAlpha(pixel);
            green += qint64(qGreen(pixel)) * qAlpha(pixel);
            blue += qint64(qBlue(pixel)) * qAlpha(pixel);
            weight += qAlpha(pixel);
        }
    }
    return weight == 0 ? QColor() : QColor(int(red / weight), int(green / weight), int(blue / weight));
}

bool canBeSeen(QIcon const &icon, QColor const &background)
{
    auto const color = meanColor(icon.pixmap(sampleSize).toImage().convertToFormat(QImage::Format_ARGB32));
    return color.isValid() && contrast(color, background) >= leastContrast;
}

} // namespace

QIcon icon(std::string_view themeName, std::string_view ownName, QColor const &background)
{
    auto const name = text(themeName);
    if (QIcon::hasThemeIcon(name)) {
        auto found = QIcon::fromTheme(name);
        if (canBeSeen(found, background))
            return found;
    }
    return ownIcon(ownName);
}

QIcon ownIcon(std::string_view name)
{
    loadOwnSymbols();
    return QIcon(new SymbolEngine(text(name)));
}

} // namespace tw::SymbolIcons
