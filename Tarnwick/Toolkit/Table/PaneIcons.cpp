#include "Tarnwick/Toolkit/Table/PaneIcons.h"

#include "Tarnwick/Table/IconKind.h"

#include <QMimeDatabase>

/// A resource in a static library is left out of the program unless something in it is called. The macro declares
/// what it calls in the namespace that it stands in, so this one function stands outside of ours.
static void loadOwnIcons()
{
    Q_INIT_RESOURCE(icons);
}

namespace tw {

namespace {

/// A folder may hold files of any number of extensions.
constexpr std::size_t mostCached = 2000;

/// A theme for programs' symbols alone has no pictures for files; then all of them are ours, so that they match.
bool themeHasFileIcons()
{
    return QIcon::hasThemeIcon(QStringLiteral("folder")) && QIcon::hasThemeIcon(QStringLiteral("text-x-generic"));
}

QIcon ownIcon(IconKind kind)
{
    auto const name = iconName(kind);
    return QIcon(
        QStringLiteral(":/icons/%1.svg").arg(QLatin1StringView(name.data(), static_cast<qsizetype>(name.size()))));
}

/// What the theme has for all files of a kind. Empty where themes have nothing that would fit.
QString genericThemeName(IconKind kind)
{
    switch (kind) {
    case IconKind::parent: // an arrow of the theme may be black, and invisible on a dark desktop
    case IconKind::folder:
        return QStringLiteral("folder");
    case IconKind::file:
    case IconKind::text:
        return QStringLiteral("text-x-generic");
    case IconKind::code:
        return QStringLiteral("text-x-script");
    case IconKind::image:
        return QStringLiteral("image-x-generic");
    case IconKind::audio:
        return QStringLiteral("audio-x-generic");
    case IconKind::video:
        return QStringLiteral("video-x-generic");
    case IconKind::archive:
        return QStringLiteral("package-x-generic");
    case IconKind::document:
        return QStringLiteral("x-office-document");
    case IconKind::spreadsheet:
        return QStringLiteral("x-office-spreadsheet");
    case IconKind::executable:
        return QStringLiteral("application-x-executable");
    case IconKind::link:
    case IconKind::special:
        break;
    }
    return {};
}

bool isExtension(std::string const &key)
{
    return !key.starts_with('\0');
}

QIcon themeIcon(std::string const &key)
{
    if (isExtension(key)) {
        auto const name = QStringLiteral("x.") + QString::fromStdString(key);
        auto const type = QMimeDatabase().mimeTypeForFile(name, QMimeDatabase::MatchExtension);
        for (auto const &candidate : {type.iconName(), type.genericIconName()}) {
            if (!type.isDefault() && QIcon::hasThemeIcon(candidate))
                return QIcon::fromTheme(candidate);
        }
    }
    auto const generic = genericThemeName(iconKindOf(key));
    return generic.isEmpty() ? QIcon() : QIcon::fromTheme(generic);
}

} // namespace

PaneIcons::PaneIcons()
{
    loadOwnIcons();
    usesTheme = themeHasFileIcons();
}

QIcon const &PaneIcons::icon(std::string const &key)
{
    auto const cached = cache.find(key);
    if (cached != cache.end())
        return cached->second;
    if (cache.size() >= mostCached)
        cache.clear();
    auto found = usesTheme ? themeIcon(key) : QIcon();
    if (found.isNull())
        found = ownIcon(iconKindOf(key));
    return cache.emplace(key, std::move(found)).first->second;
}

void PaneIcons::clear()
{
    cache.clear();
    usesTheme = themeHasFileIcons();
}

} // namespace tw
