#include "Tarnwick/Toolkit/Commands/KeyStrokes.h"

#include <QKeySequence>

namespace tw {

KeyStroke keyStrokeOf(QKeyEvent const &event)
{
    auto const key = event.key() == Qt::Key_Backtab ? int(Qt::Key_Tab) : event.key(); // what Qt makes of Shift+Tab
    auto const held = event.modifiers();
    return {
        .sign = QKeySequence(key).toString(QKeySequence::PortableText).toStdString(),
        .control = held.testFlag(Qt::ControlModifier),
        .alt = held.testFlag(Qt::AltModifier),
        .shift = held.testFlag(Qt::ShiftModifier),
        .meta = held.testFlag(Qt::MetaModifier),
        .keypad = held.testFlag(Qt::KeypadModifier),
        .scanCode = event.nativeScanCode(),
    };
}

} // namespace tw
