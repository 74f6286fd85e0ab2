#include "Tarnwick/Window/TabItem.h"

#include "TWCore/Model/DisplayText.h"
#include "TWCore/Model/WindowsPath.h"
#include "Tarnwick/Connections/ConnectionItem.h"

namespace tw {

TabItem TabItem::of(PaneSpec const &place)
{
    auto const end = place.path.find_last_not_of('/');
    auto const whole = end == std::string::npos ? std::string() : place.path.substr(0, end + 1);
    auto const last = whole.substr(whole.rfind('/') + 1);
    auto const name = onOneLine(last.empty() ? "/" : last);
    auto const connection = withNothingHidden(place.connection);
    auto const isRemote = place.connection != localConnection;
    return {.title = isRemote ? connection + ':' + name : name,
            .toolTip = connection + ':' + onOneLine(WindowsPath::display(place.path)),
            .isRemote = isRemote};
}

} // namespace tw
