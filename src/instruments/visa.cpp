#include "instruments/visa.h"

#include <array>

#include "config/startup_config.h"
#include "instruments/bus_address.h"
#include "instruments/bus_elements.h"
#include "platform/library.h"
#include "state/report.h"
#include "values/numbers.h"

namespace orvane {
namespace {

// Status codes and attributes of the VISA standard.
constexpr VisaLibrary::Status success = 0, success_terminator = 0x3FFF0005, success_count = 0x3FFF0006;
constexpr std::uint32_t attribute_terminator = 0x3FFF0018, attribute_terminator_on = 0x3FFF0038,
                        attribute_timeout = 0x3FFF001A;
constexpr const char* serial_resources = "ASRL?*INSTR";
constexpr std::uint32_t piece_limit = 4096;
constexpr std::uint32_t longest_timeout = 1000000;  // milliseconds

#ifdef _WIN32
constexpr const char* library_names[] = {"visa64.dll", "visa32.dll"};
#else
constexpr const char* library_names[] = {"libvisa.so", "libvisa.so.0"};
#endif

const VisaLibrary* installed = nullptr;

// --- The library -----------------------------------------------------------------------------------------------

template <class T>
bool look_up(const SharedLibrary& library, T*& member, const char* name) {
  member = reinterpret_cast<T*>(library.symbol(name));
  return member != nullptr;
}

bool look_up_all(const SharedLibrary& library, VisaLibrary& v) {
  return look_up(library, v.viOpenDefaultRM, "viOpenDefaultRM") && look_up(library, v.viOpen, "viOpen") &&
         look_up(library, v.viClose, "viClose") && look_up(library, v.viRead, "viRead") &&
         look_up(library, v.viWrite, "viWrite") && look_up(library, v.viFindRsrc, "viFindRsrc") &&
         look_up(library, v.viFindNext, "viFindNext") && look_up(library, v.viSetAttribute, "viSetAttribute");
}

// Tried once in the life of the program.
const VisaLibrary* load() {
  static VisaLibrary functions;
  for (const char* name : library_names) {
    static SharedLibrary library;
    std::string reason;
    if (library.open(name, reason) && look_up_all(library, functions)) return &functions;
  }
  return nullptr;
}

const VisaLibrary* library() {
  if (installed != nullptr) return installed;
  static const VisaLibrary* const loaded = load();
  return loaded;
}

bool failed(RunState& run, const char* function, VisaLibrary::Status status) {
  return run_error(run, 30934, function, static_cast<unsigned>(status));
}

// --- Sessions --------------------------------------------------------------------------------------------------

bool have_manager(RunState& run, const VisaLibrary& visa) {
  if (run.visa.manager != 0) return true;
  const auto status = visa.viOpenDefaultRM(&run.visa.manager);
  if (status >= success) return true;
  run.visa.manager = 0;
  return failed(run, "viOpenDefaultRM", status);
}

// Does the library know this serial resource? One that it does not list cannot be opened in time: some libraries then
// wait for a device that is not there.
bool serial_is_listed(RunState& run, const VisaLibrary& visa, const std::string& resource) {
  VisaLibrary::Session list = 0;
  std::uint32_t count = 0;
  std::array<char, VisaLibrary::description_size> name{};
  auto status = visa.viFindRsrc(run.visa.manager, serial_resources, &list, &count, name.data());
  bool listed = false;
  for (std::uint32_t i = 0; status >= success && i < count && !listed; ++i) {
    if (i > 0) status = visa.viFindNext(list, name.data());
    name.back() = '\0';
    listed = status >= success && resource == name.data();
  }
  if (list != 0) visa.viClose(list);
  return listed || run_error(run, 30935, resource);
}

void close_session(RunState& run, const VisaLibrary& visa) {
  if (run.visa.session != 0) visa.viClose(run.visa.session);
  run.visa.session = 0;
}

std::string resource_name(const DevAddress& address) {
  return address.interface == DeviceInterface::serial
             ? formatted("ASRL%u::INSTR", address.port)
             : formatted("GPIB%u::%u::INSTR", address.bus.board, address.bus.primary);
}

bool open_session(RunState& run, const DevAddress& address) {
  if (run.demo_mode) return true;
  const VisaLibrary& visa = *library();
  const std::string resource = resource_name(address);
  if (!have_manager(run, visa)) return false;
  if (address.interface == DeviceInterface::serial && !serial_is_listed(run, visa, resource)) return false;
  close_session(run, visa);
  const auto status = visa.viOpen(run.visa.manager, resource.c_str(), 0, 0, &run.visa.session);
  if (status >= success) return true;
  run.visa.session = 0;
  return failed(run, "viOpen", status);
}

bool has_session(RunState& run) { return run.demo_mode || run.visa.session != 0 || run_error(run, 30936); }

// --- Elements --------------------------------------------------------------------------------------------------

bool eval_address(RunState& run, const FscRecord&, std::string_view argument) {
  DevAddress address;
  const int wrong = parse_address(argument, AddressKind::either, address);
  if (wrong != 0) return is_demo_alias(run, wrong) || run_error(run, wrong, argument);
  run.visa.bus = address.bus;
  return open_session(run, address);
}

std::string demo_question(const RunState& run) { return msg(5015, run.visa.bus.primary); }

bool read_piece(RunState& run, std::string& piece, bool, bool& ended) {
  piece.resize(piece_limit);
  std::uint32_t count = 0;
  const auto status = library()->viRead(run.visa.session, reinterpret_cast<unsigned char*>(piece.data()),
                                        piece_limit, &count);
  piece.resize(std::min(count, piece_limit));
  if (status != success && status != success_terminator && status != success_count)
    return failed(run, "viRead", status);
  ended = status != success_count || piece.empty();
  return true;
}

constexpr ReplySource source = {2860, has_session, demo_question, read_piece, false};

bool eval_reply(RunState& run, const FscRecord& record, std::string_view argument) {
  return eval_input(run, record, argument, ReplyUse::number, source);
}
bool eval_reply_text(RunState& run, const FscRecord& record, std::string_view argument) {
  return eval_input(run, record, argument, ReplyUse::text, source);
}
bool eval_reply_discard(RunState& run, const FscRecord& record, std::string_view argument) {
  return eval_input(run, record, argument, ReplyUse::discard, source);
}

bool write(RunState& run, std::string_view text) {
  if (!has_session(run)) return false;
  if (run.demo_mode) return true;
  while (!text.empty()) {
    std::uint32_t written = 0;
    const auto status =
        library()->viWrite(run.visa.session, reinterpret_cast<const unsigned char*>(text.data()),
                           static_cast<std::uint32_t>(text.size()), &written);
    if (status < success || written == 0) return failed(run, "viWrite", status);
    text.remove_prefix(std::min<std::size_t>(written, text.size()));
  }
  return true;
}

bool send(RunState& run, const FscRecord&, std::string_view text) { return write(run, text); }

bool eval_file(RunState& run, const FscRecord& record, std::string_view argument) {
  return eval_output(run, record, argument,
                     [&run](std::string_view block, bool) { return write(run, block); });
}

bool set_attribute(RunState& run, std::uint32_t attribute, std::uintptr_t value) {
  if (run.demo_mode) return true;
  const auto status = library()->viSetAttribute(run.visa.session, attribute, value);
  return status >= success || failed(run, "viSetAttribute", status);
}

bool eval_term(RunState& run, const FscRecord& record, std::string_view argument) {
  const auto byte = terminator_argument(argument, false);
  if (!byte) return refuse_argument(run, record, argument);
  if (!has_session(run)) return false;
  const bool on = *byte != no_terminator;
  return (!on || set_attribute(run, attribute_terminator, static_cast<std::uintptr_t>(*byte))) &&
         set_attribute(run, attribute_terminator_on, on ? 1 : 0);
}

bool eval_timeout(RunState& run, const FscRecord& record, std::string_view argument) {
  const auto milliseconds = element_number(argument, 0, longest_timeout);
  if (!milliseconds) return refuse_argument(run, record, argument);
  return has_session(run) && set_attribute(run, attribute_timeout, *milliseconds);
}

constexpr ElementAction elements[] = {
    {"@", eval_address},        {"D", eval_delay}, {"I", eval_reply},   {"I$", eval_reply_text},
    {"I!", eval_reply_discard}, {"O", eval_file},  {"TERM", eval_term}, {"T", eval_timeout},
};
constexpr BusLanguage language = {elements, send};

}  // namespace

void set_visa_library(const VisaLibrary* library) { installed = library; }

bool visa_statement(Statement& s) {
  VisaState& state = s.run.visa;
  if (s.record.has_flag(line_flag::first)) state.text.clear();
  state.text += s.record.text(field::text);
  if (!s.record.has_flag(line_flag::last)) return true;
  if (startup_config().ni_visa == 0 || (!s.run.demo_mode && library() == nullptr))
    return run_error(s.run, 313);
  return speak(s.run, s.record, state.text, language);
}

void visa_end_of_run(RunState& run) {
  if (run.visa.manager == 0) return;
  const VisaLibrary& visa = *library();  // who has a session has a library
  close_session(run, visa);
  visa.viClose(run.visa.manager);
  run.visa.manager = 0;
}

}  // namespace orvane
