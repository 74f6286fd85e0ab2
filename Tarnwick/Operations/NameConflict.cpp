#include "Tarnwick/Operations/NameConflict.h"

namespace tw {

NameConflict::Comparison NameConflict::comparison() const noexcept
{
    if (source.kind != target.kind)
        return Comparison::unlike;
    if (source.kind == EntryKind::directory)
        return Comparison::folders;
    if (source.mtime != target.mtime)
        return source.mtime > target.mtime ? Comparison::newer : Comparison::older;
    return source.size == target.size ? Comparison::same : Comparison::differs;
}

bool NameConflict::isReplaceable() const noexcept
{
    return (source.kind == EntryKind::directory) == (target.kind == EntryKind::directory);
}

} // namespace tw
