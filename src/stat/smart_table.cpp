#include "stat/smart_table.h"

#include <cstddef>
#include <cstdlib>
#include <new>
#include <string_view>
#include <utility>

#include <libsmartcols/libsmartcols.h>

#include "stat/safe_text.h"

namespace Quask::Stat {
namespace {

using FormatKind = RowFormat::Kind;

int flagsOf(Column::Kind kind)
{
    switch (kind) {
        case Column::Kind::number:
            return SCOLS_FL_RIGHT;
        case Column::Kind::name:
            return SCOLS_FL_TRUNC;
        case Column::Kind::words:
            break;
    }
    return SCOLS_FL_WRAP;
}

// The library reports nothing but a lack of memory here.
void require(bool succeeded)
{
    if (!succeeded) {
        throw std::bad_alloc();
    }
}

}  // namespace

void SmartTable::Release::operator()(libscols_table* table) const
{
    scols_unref_table(table);
}

SmartTable::SmartTable(std::vector<Column const*> columns, RowFormat const& format)
    : columns_(std::move(columns)), format_(format), table_(scols_new_table())
{
    libscols_table* const table = table_.get();
    require(table != nullptr);
    // What is not JSON or raw is made printable here, by one rule for all outputs.
    scols_table_enable_noencoding(table, 1);
    scols_table_enable_raw(table, format.kind == FormatKind::raw ? 1 : 0);
    scols_table_enable_json(table, format.kind == FormatKind::json ? 1 : 0);
    scols_table_enable_noheadings(table, format.hasHeadings ? 0 : 1);
    require(scols_table_set_name(table, "tables") == 0);
    bool const isNarrow = format.kind == FormatKind::table && format.width != 0;
    scols_table_set_termforce(table, isNarrow ? SCOLS_TERMFORCE_ALWAYS : SCOLS_TERMFORCE_NEVER);
    scols_table_set_termwidth(table, format.width);
    for (Column const* const column : columns_) {
        libscols_column* const added =
            scols_table_new_column(table, column->name, 0, flagsOf(column->kind));
        require(added != nullptr);
        scols_column_set_json_type(
            added, column->kind == Column::Kind::number ? SCOLS_JSON_NUMBER : SCOLS_JSON_STRING);
    }
}

std::string SmartTable::cellText(Column const& column, std::string text) const
{
    if (column.kind == Column::Kind::number) {
        bool const isPercent = std::string_view(column.name).ends_with('%');
        return isPercent && format_.kind == FormatKind::table ? text + "%" : text;
    }
    switch (format_.kind) {
        case FormatKind::json:
            return utf8Text(text);
        case FormatKind::raw:
            return text;  // the library escapes it
        case FormatKind::table:
            break;
    }
    return terminalText(text, format_.isUtf8);
}

void SmartTable::add(Row const& row)
{
    libscols_line* const line = scols_table_new_line(table_.get(), nullptr);
    require(line != nullptr);
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        Column const& column = *columns_[i];
        std::optional<std::string> const cell = column.cell(row);
        if (cell) {
            require(scols_line_set_data(line, i, cellText(column, *cell).c_str()) == 0);
        } else if (format_.kind != FormatKind::json) {
            require(scols_line_set_data(line, i, "-") == 0);
        }
    }
}

std::string SmartTable::text(std::size_t unreadProcesses) const
{
    char* printed = nullptr;
    require(scols_print_table_to_string(table_.get(), &printed) == 0);
    std::unique_ptr<char, decltype(&std::free)> const owned(printed, &std::free);
    std::string text = printed == nullptr ? "" : printed;
    if (format_.kind == FormatKind::json) {
        constexpr std::string_view end = "\n}\n";
        text = asciiJson(text);
        if (text.ends_with(end)) {
            text.insert(text.size() - end.size(),
                        ",\n   \"unread_processes\": " + std::to_string(unreadProcesses));
        }
    } else if (!text.empty() && !text.ends_with('\n')) {
        text += '\n';
    }
    return text;
}

}  // namespace Quask::Stat
