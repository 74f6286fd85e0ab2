#include "Tarnwick/Toolkit/Commands/CommandKeySequences.h"

#include "Tarnwick/Toolkit/Appearance/Wording.h"

namespace tw {

QList<QKeySequence> shortcutsOf(CommandRow const &row)
{
    QList<QKeySequence> keys;
    if (row.keys.owner != KeyOwner::shortcut)
        return keys;
    for (auto const spelled : {row.keys.main, row.keys.additional}) {
        if (!spelled.empty())
            keys += QKeySequence(QString::fromUtf8(spelled.data(), static_cast<qsizetype>(spelled.size())),
                                 QKeySequence::PortableText);
    }
    return keys;
}

QString keyTextOf(CommandRow const &row)
{
    auto const keys = shortcutsOf(row);
    return keys.isEmpty() ? Wording::shown(row.keys.main) : keys.front().toString(QKeySequence::NativeText);
}

} // namespace tw
