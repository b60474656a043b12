#include "procedure/operator/pictures.h"

#include <algorithm>
#include <iterator>

#include "config/startup_config.h"
#include "platform/files.h"
#include "platform/process.h"
#include "procedure/file/procedure.h"
#include "procedure/operator/lines.h"
#include "state/buttons.h"
#include "state/report.h"
#include "text/expand.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr int highest_percent = 99;
constexpr std::size_t path_limit = 4096;

// By the first style byte of DRAW, from 1.
constexpr const char* views[] = {"Front", "Back", "Left", "Right", "Bottom"};

std::string in_picture_folder(std::string_view name) {
  std::string path;
  return join_path(path, path_limit, startup_config().picdir, system_text(name)) ? path : std::string(name);
}

int percent(int value) { return std::clamp(value, 0, highest_percent); }

}  // namespace

std::string picture_file(std::string_view text, std::string_view& rest) {
  text = trim_blanks(text);
  rest = {};
  std::string path = in_picture_folder(text);
  if (text.empty() || is_ordinary_file(path)) return text.empty() ? std::string() : path;
  const bool quoted = text.starts_with('"');
  if (quoted) text.remove_prefix(1);
  const std::size_t end = std::min(quoted ? text.find('"') : text.find_first_of(" \t"), text.size());
  rest = trim_blanks(text.substr(std::min(end + 1, text.size())));
  return in_picture_folder(text.substr(0, end));
}

std::string picture_of(const FscRecord& record) {
  std::string_view rest;
  const std::string_view text = record.text(field::text);
  if (!record.has_flag(line_flag::first)) return {};
  const std::string path = picture_file(text, rest);
  // A name with elements in it is known only when the statement runs.
  return text.substr(0, text.size() - rest.size()).find('[') != std::string_view::npos ? std::string() : path;
}

std::optional<PictureFrame> picture_frame(const DrawSettings& draw) {
  if (draw.x == 0 && draw.y == 0 && draw.width == 0 && draw.height == 0) return std::nullopt;
  return PictureFrame{.x = draw.x, .y = draw.y, .width = draw.width, .height = draw.height};
}

std::string picture_title(const DrawSettings& draw) {
  const std::size_t view = draw.style.front();
  return view >= 1 && view <= std::size(views) ? formatted("UUT %s View", views[view - 1]) : "";
}

bool picture_window(Statement& s, LinesWindow& window) {
  std::vector<std::string_view> texts;
  const bool whole = gather_statement(*s.node, texts);
  std::string first;
  if (whole && !texts.empty()) {
    std::string_view rest;
    if (!expand_text(s.run, s.record, texts.front(), first)) return false;
    std::string path = picture_file(first, rest);
    if (!path.empty())
      window.picture = Picture{
          .path = std::move(path), .title = picture_title(s.run.draw), .frame = picture_frame(s.run.draw)};
    // Blanks alone, or nothing, behind the name are no line.
    if (!rest.empty()) window.lines = wrap_lines(rest);
    texts.erase(texts.begin());
  }
  return shown_lines(s, texts, window.lines);
}

bool run_draw(Statement& s) {
  const FscRecord& record = s.record;
  s.run.draw = {.x = percent(record.get(field::draw_x) - draw_offset),
                .y = percent(record.get(field::draw_y)),
                .width = percent(record.get(field::draw_width) - draw_offset),
                .height = percent(record.get(field::draw_height)),
                .style = {record.get(field::draw_style_1), record.get(field::draw_style_2),
                          record.get(field::draw_style_3), record.get(field::draw_style_4)}};
  return true;
}

bool run_pic(Statement& s) {
  if (!is_last_record(s)) return true;
  LinesWindow window;
  window.kind = WindowKind::picture;
  window.title = msg(689);
  if (!picture_window(s, window)) return false;
  window.buttons = {standard_button(button_row::ok, answer::ok, true),
                    standard_button(button_row::terminate, answer::terminate)};
  const int code = show_lines(window);
  if (code == answer::failed) return run_error(s.run, 30702);
  if (code == answer::terminate) s.run.set(run_flag::skip_test);
  return true;
}

}  // namespace orvane
