#include "Tarnwick/Table/PaneCells.h"

#include "TWCore/Model/DisplayText.h"
#include "Tarnwick/Format/Fmt.h"

namespace tw {

namespace {

std::string parentCellText(PaneColumn column)
{
    switch (column) {
    case PaneColumn::name:
        return "..";
    case PaneColumn::size:
        return "<UP>";
    case PaneColumn::ext:
    case PaneColumn::date:
    case PaneColumn::attr:
        break;
    }
    return {};
}

} // namespace

std::string_view paneColumnIdentifier(PaneColumn column)
{
    switch (column) {
    case PaneColumn::name:
        return "name";
    case PaneColumn::ext:
        return "ext";
    case PaneColumn::size:
        return "size";
    case PaneColumn::date:
        return "date";
    case PaneColumn::attr:
        return "attr";
    }
    return {};
}

std::string_view paneColumnTitle(PaneColumn column)
{
    switch (column) {
    case PaneColumn::name:
        return "Name";
    case PaneColumn::ext:
        return "Ext";
    case PaneColumn::size:
        return "Size";
    case PaneColumn::date:
        return "Date";
    case PaneColumn::attr:
        return "Attr";
    }
    return {};
}

std::optional<SortKey> sortKeyOf(PaneColumn column)
{
    switch (column) {
    case PaneColumn::name:
        return SortKey::name;
    case PaneColumn::ext:
        return SortKey::ext;
    case PaneColumn::size:
        return SortKey::size;
    case PaneColumn::date:
        return SortKey::date;
    case PaneColumn::attr:
        break;
    }
    return std::nullopt;
}

std::string paneCellText(PaneModel const &model, int row, PaneColumn column)
{
    auto const *const entry = model.entry(row);
    if (entry == nullptr)
        return model.hasParentRow() && row == 0 ? parentCellText(column) : std::string();
    auto const split = [&] { return Fmt::splitExtension(model.name(row), Fmt::IsDirectory{entry->isDirectory()}); };
    switch (column) {
    case PaneColumn::name:
        return onOneLine(split().base);
    case PaneColumn::ext:
        return onOneLine(split().extension);
    case PaneColumn::size:
        return Fmt::size(entry->size, entry->kind);
    case PaneColumn::date:
        return Fmt::date(entry->mtime);
    case PaneColumn::attr:
        return Fmt::mode(entry->mode, entry->kind);
    }
    return {};
}

} // namespace tw
