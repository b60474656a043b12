#include "procedure/pipeline/own_words.h"

#include "messages/encoding.h"
#include "state/debug.h"

namespace orvane {
namespace {

constexpr std::size_t directory_limit = 261;
constexpr std::size_t name_limit = 55;

bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

struct Switch {
  const char* word;
  bool OwnWords::*set;  // null: nothing hangs on it
};
constexpr Switch switches[] = {
    {"-AutoTest", &OwnWords::auto_test}, {"-trace", &OwnWords::trace}, {"-lfcr", &OwnWords::lfcr},
    {"-hide", &OwnWords::hide},          {"-exit", &OwnWords::exit},   {"-logo", &OwnWords::no_logo},
    {"-load", &OwnWords::load},          {"-pack", &OwnWords::pack},   {"-cproc", nullptr},  // the editor's
};

// A switch, or a single letter, which is never unknown.
bool take_switch(const std::string& word, OwnWords& own) {
  for (const Switch& row : switches) {
    if (word != row.word) continue;
    if (row.set != nullptr) own.*row.set = true;
    return true;
  }
  return word.size() == 2 && word[0] == '-' && is_letter(word[1]) && word != "-h";
}

std::optional<std::string> take_procedure(const std::string& word, OwnWords& own) {
  own.procedure = cp1252_from_either(word);
  if (own.procedure.empty()) return "-run needs the name of a procedure";
  if (own.procedure.size() > name_limit)
    return "the name of a procedure has at most " + std::to_string(name_limit) + " characters";
  return std::nullopt;
}

}  // namespace

std::optional<std::string> take_own_words(std::vector<std::string>& words, OwnWords& own) {
  std::vector<std::string> rest;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    const bool takes_value = word == "-run" || word == "-dir";
    if (takes_value && i + 1 == words.size()) return word + " needs a value";
    if (word == "-run") {
      if (const auto wrong = take_procedure(words[++i], own)) return wrong;
    } else if (word == "-dir") {
      own.directory = words[++i];
      if (own.directory.size() > directory_limit) return "the directory behind -dir is too long";
    } else if (word.size() > 2 && word.starts_with("-T")) {
      own.debug_letters += word.substr(2);
    } else if (!take_switch(word, own)) {
      rest.push_back(word);
    }
  }
  words = std::move(rest);
  return std::nullopt;
}

void apply_debug_words(const OwnWords& own) {
  if (own.auto_test) {
    set_log_flags(log_bit::auto_test);
    set_box_flags(box_bit::none);
  }
  if (own.trace) {
    set_debug_flags(debug_bit::bus);
    set_log_flags(log_bit::open_log);
  }
  if (own.lfcr) set_log_flags(log_bit::lfcr);
  debug_letters(own.debug_letters);
}

}  // namespace orvane
