// Lists of the console's desk: pages of numbered rows, their columns set out.
#include <algorithm>

#include "console/columns.h"
#include "console/desk.h"
#include "messages/catalogue.h"

namespace orvane {
namespace {

constexpr std::size_t rows_printed = 40;  // around the chosen row

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool contains(std::string_view line, std::string_view letters) {
  const auto same = [](char a, char b) { return lower(a) == lower(b); };
  return std::search(line.begin(), line.end(), letters.begin(), letters.end(), same) != line.end();
}

}  // namespace

void ConsoleDesk::begin_rows(Waiting& window) {
  window.first_shown = *window.row > rows_printed / 2 ? *window.row - rows_printed / 2 : 0;
}

void ConsoleDesk::show_rows(const Waiting& window) {
  const std::size_t count = window.rows->count();
  const std::size_t end = std::min(count, window.first_shown + rows_printed);
  std::vector<std::string> rows = {std::string(window.headings)};
  for (std::size_t i = window.first_shown; i < end; ++i) rows.push_back(window.rows->row(i));
  const std::vector<std::size_t> widths = column_widths(rows);
  if (!window.headings.empty()) print("        " + in_columns(window.headings, widths));
  for (std::size_t i = window.first_shown; i < end; ++i) {
    const std::string row = in_columns(rows[i - window.first_shown + 1], widths);
    print((i == *window.row ? ">" : " ") + formatted("%5d  ", i + 1) + coloured(row, window.rows->colour(i)));
  }
  if (end - window.first_shown < count)
    print(formatted("  %d to %d of %d rows: + and - turn the page, /TEXT goes to the next row with the text",
                    window.first_shown + 1, end, count));
}

// "+", "-" and "/TEXT" show other rows of a long list. True if the entry was one of them.
bool ConsoleDesk::browse(Waiting& window, std::string_view entry) {
  const std::size_t count = window.rows->count();
  if (entry == "+") {
    if (window.first_shown + rows_printed < count) window.first_shown += rows_printed;
  } else if (entry == "-") {
    window.first_shown -= std::min(window.first_shown, rows_printed);
  } else if (entry.size() > 1 && entry.front() == '/') {
    std::size_t step = 1;
    const auto row = [&] { return (window.first_shown + step) % count; };
    while (step <= count && !contains(window.rows->row(row()), entry.substr(1))) ++step;
    if (step > count) {
      print("  No row has this text.");
      return true;
    }
    window.first_shown = row();
  } else {
    return false;
  }
  show_rows(window);
  return true;
}

}  // namespace orvane
