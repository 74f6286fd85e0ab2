#include "Tarnwick/Operations/OperationTable.h"

#include "Tarnwick/Operations/CopyMove.h"
#include "Tarnwick/Operations/Delete.h"
#include "Tarnwick/Operations/MarkByMask.h"
#include "Tarnwick/Operations/NewFolder.h"
#include "Tarnwick/Operations/Pack.h"

namespace tw {

Operation operationOf(Command command)
{
    switch (command) {
    case Command::copyFiles:
        return copyOperands;
    case Command::moveFiles:
        return moveOperands;
    case Command::packFiles:
        return packOperands;
    case Command::unpackFile:
        return unpackArchive;
    case Command::newFolder:
        return newFolder;
    case Command::deleteFiles:
        return deleteOperands;
    case Command::markByMask:
        return markByMask;
    case Command::unmarkByMask:
        return unmarkByMask;
    default:
        return nullptr;
    }
}

} // namespace tw
