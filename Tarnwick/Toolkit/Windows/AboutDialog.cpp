#include "Tarnwick/Toolkit/Windows/AboutDialog.h"

#include <QDialogButtonBox>
#include <QFontInfo>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tw {

namespace {

constexpr int iconSize = 96;
constexpr int margin = 28;
constexpr int creditsFontSize = 11;

// The address of the maker's other product, given when the program is built. Empty: it is named without a link.
auto const productSite = QStringLiteral(TARNWICK_PRODUCT_SITE);
auto const productName = QStringLiteral("Pagelume Pro");

QLabel *centered(QString const &text, QWidget *parent)
{
    auto *const label = new QLabel(text, parent);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

QFont scaled(QFont font, double factor, QFont::Weight weight)
{
    font.setPointSizeF(QFontInfo(font).pointSizeF() * factor);
    font.setWeight(weight);
    return font;
}

} // namespace

QString AboutDialog::credits()
{
    auto const product = productSite.isEmpty()
                             ? productName.toHtmlEscaped()
                             : QStringLiteral("<a href=\"%1\">%2</a>").arg(productSite.toHtmlEscaped(), productName);
    return QStringLiteral("Remote filesystems that behave like local ones.<br>By the makers of %1.").arg(product);
}

AboutDialog::AboutDialog(QString const &version, QWidget *parent) : QDialog(parent)
{
    setWindowTitle(QStringLiteral("About Tarnwick"));
    auto *const all = new QVBoxLayout(this);
    all->setContentsMargins(margin, margin, margin, margin);
    all->setSpacing(margin / 4);
    all->setSizeConstraint(QLayout::SetFixedSize);

    auto *const icon = centered({}, this);
    icon->setPixmap(
        QIcon(QStringLiteral(":/icons/tarnwick.svg")).pixmap(QSize(iconSize, iconSize), devicePixelRatioF()));
    all->addWidget(icon);

    auto *const name = centered(QStringLiteral("Tarnwick"), this);
    name->setFont(scaled(font(), 1.6, QFont::DemiBold));
    all->addWidget(name);
    all->addWidget(centered(QStringLiteral("Version %1").arg(version), this));

    auto *const below = centered(credits(), this);
    auto small = font();
    small.setPixelSize(creditsFontSize);
    below->setFont(small);
    below->setTextFormat(Qt::RichText);
    below->setOpenExternalLinks(true);
    below->setTextInteractionFlags(Qt::TextBrowserInteraction);
    all->addWidget(below);

    all->addSpacing(margin / 2);
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->setCenterButtons(true);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    all->addWidget(buttons);
    buttons->button(QDialogButtonBox::Close)->setFocus();
}

} // namespace tw
