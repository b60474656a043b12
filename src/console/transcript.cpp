#include "console/transcript.h"

#include <nlohmann/json.hpp>

#include "messages/encoding.h"

namespace orvane {
namespace {

using Json = nlohmann::ordered_json;

void put(std::ofstream& file, const Json& line) {
  if (file.is_open()) file << line.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n' << std::flush;
}

const char* name_of(MessageKind kind) {
  switch (kind) {
    case MessageKind::error: return "error";
    case MessageKind::warning: return "warning";
    case MessageKind::information: break;
  }
  return "information";
}

}  // namespace

bool Transcript::open(const std::string& path) {
  file_.open(path, std::ios::binary | std::ios::trunc);
  return file_.is_open();
}

void Transcript::window(const Window& window) {
  Json line;
  line["event"] = "window";
  line["kind"] = window.kind;
  line["title"] = utf8_from_cp1252(window.title);
  line["lines"] = Json::array();
  for (const std::string& text : window.lines) line["lines"].push_back(utf8_from_cp1252(text));
  line["buttons"] = window.buttons;
  if (window.has_answer) line["answer"] = window.answer;
  if (window.text != nullptr) line["text"] = utf8_from_cp1252(*window.text);
  if (window.row > 0) line["row"] = window.row;
  if (!window.picture.empty()) line["picture"] = utf8_from_either(window.picture);
  for (const auto& [name, text] : window.fields)
    line["fields"][utf8_from_cp1252(name)] = utf8_from_cp1252(text);
  put(file_, line);
}

void Transcript::message(MessageKind kind, int number, std::string_view text) {
  put(file_,
      {{"event", "message"}, {"kind", name_of(kind)}, {"number", number}, {"text", utf8_from_either(text)}});
}

void Transcript::status(int row, std::string_view text) {
  put(file_, {{"event", "status"}, {"row", row}, {"text", utf8_from_cp1252(text)}});
}

void Transcript::result(const ResultLine& result) {
  if (!file_.is_open()) return;
  put(file_, {{"event", "result"},
              {"line1", utf8_from_cp1252(result.line1)},
              {"line2", utf8_from_cp1252(result.line2)},
              {"status_text", utf8_from_cp1252(result.status_text)},
              {"colour", result.colour}});
}

void Transcript::run_start(std::string_view procedure) {
  put(file_, {{"event", "run"}, {"state", "start"}, {"procedure", utf8_from_cp1252(procedure)}});
}

void Transcript::run_end(std::string_view procedure, int run_test, std::string_view overall, int exit) {
  put(file_, {{"event", "run"},
              {"state", "end"},
              {"procedure", utf8_from_cp1252(procedure)},
              {"run_test", run_test},
              {"overall", std::string(overall)},
              {"exit", exit}});
}

}  // namespace orvane
