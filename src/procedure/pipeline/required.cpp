#include "procedure/pipeline/required.h"

#include <algorithm>

#include "config/startup_config.h"
#include "instruments/device_list.h"
#include "instruments/instrument_names.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "state/buttons.h"
#include "state/report.h"

namespace orvane {
namespace {

using Served = RequiredInstrument::Served;

// The key show_req_instr: when the list of required instruments is shown before the run begins.
constexpr std::int16_t list_when_open = 1, list_always = 2;

std::span<const ExclusiveOptions>& exclusive_options() {
  static std::span<const ExclusiveOptions> rows;
  return rows;
}

bool& reserved() {
  static bool is_reserved = false;
  return is_reserved;
}

std::uint16_t with_options(std::uint16_t code, unsigned mask) {
  for (const ExclusiveOptions& row : exclusive_options()) {
    if (row.code == code && (mask & row.winner) != 0 && (mask & row.loser) != 0)
      mask &= ~static_cast<unsigned>(row.loser);
  }
  return static_cast<std::uint16_t>(mask);
}

// The options of a mask: "/1/3".
std::string options_text(std::uint16_t mask) {
  std::string text;
  for (int bit = 0; bit < 16; ++bit) {
    if ((mask >> bit & 1) != 0) text += "/" + std::to_string(bit + 1);
  }
  return text;
}

// --- What fits -------------------------------------------------------------------------------------------------

bool fits(const RequiredInstrument& wanted, std::uint16_t code) {
  if (!dev_is_configured(code, wanted.option_mask)) return false;
  const std::vector<InstrumentRecord>& rows = device_list().instruments;
  const auto host = std::find_if(rows.begin(), rows.end(),
                                 [code](const InstrumentRecord& row) { return row.code == code; });
  const auto fitted = [&](const RequiredInstrument::Accessory& one) {
    return dev_slot_is_configured(*host, one.code, one.option_mask);
  };
  return std::all_of(wanted.accessories.begin(), wanted.accessories.end(),
                     [&](const RequiredInstrument::AnyOf& group) {
                       return std::any_of(group.begin(), group.end(), fitted);
                     });
}

bool is_in_list(std::uint16_t code) {
  const std::vector<InstrumentRecord>& rows = device_list().instruments;
  return std::any_of(rows.begin(), rows.end(),
                     [code](const InstrumentRecord& row) { return row.code == code; });
}

// The instrument itself, or where it is not configured those that may stand in for it.
std::vector<std::uint16_t> candidates(const RequiredInstrument& wanted) {
  std::vector<std::uint16_t> found;
  if (is_in_list(wanted.code)) {
    if (fits(wanted, wanted.code)) found.push_back(wanted.code);
    return found;
  }
  for (const std::uint16_t code : dev_substitutes(wanted.code)) {
    if (fits(wanted, code)) found.push_back(code);
  }
  return found;
}

void use(RequiredInstrument& wanted, std::uint16_t code) {
  wanted.served = Served::configured;
  wanted.used = code;
  if (code != wanted.code) dev_substitute(wanted.code, code);
  dev_set_flags(code, device_flag::required);
  for (const RequiredInstrument::AnyOf& group : wanted.accessories) {
    for (const RequiredInstrument::Accessory& one : group) dev_require_slots(code, one.code, one.option_mask);
  }
}

// --- Windows ---------------------------------------------------------------------------------------------------

class TextRows : public RowSource {
 public:
  explicit TextRows(std::vector<std::string> rows) : rows_(std::move(rows)) {}
  std::size_t count() const override { return rows_.size(); }
  std::string row(std::size_t index) const override {
    return index < rows_.size() ? rows_[index] : std::string();
  }

 private:
  std::vector<std::string> rows_;
};

// What serves, and where it is.
std::string served_text(const RequiredInstrument& wanted) {
  switch (wanted.served) {
    case Served::configured: {
      const InstrumentRecord* row = dev_find(wanted.code);
      return instrument_text(wanted.used) + '\t' +
             (row != nullptr ? address_text(row->address) : std::string());
    }
    case Served::by_hand: return msg(30649) + '\t';
    default: return msg(2996) + '\t';
  }
}

// The question about an instrument, by what is known of it.
std::string question(const RequiredInstrument& wanted, bool several) {
  if (several) return msg(30651, required_text(wanted));
  if (is_in_list(wanted.code) && dev_find(wanted.code) == nullptr)
    return msg(2990, instrument_text(wanted.code));
  if (instrument_name(wanted.code).empty()) return msg(2989, wanted.code);
  if (wanted.option_mask != 0 || !wanted.accessories.empty()) return msg(2988, required_text(wanted));
  return msg(2987, required_text(wanted));
}

// Asks which instrument serves. A check_result; go_on leaves no instrument open.
int ask_for(RunState& run, RequiredInstrument& wanted, const std::vector<std::uint16_t>& found) {
  std::vector<std::string> texts;
  for (const std::uint16_t code : found) {
    const InstrumentRecord* row = dev_find(code);
    texts.push_back(required_text(wanted) + '\t' + instrument_text(code) + '\t' +
                    (row != nullptr ? address_text(row->address) : std::string()));
  }
  if (found.empty()) texts.push_back(required_text(wanted) + '\t' + msg(2996) + '\t');
  const TextRows rows(std::move(texts));
  ChoiceWindow window;
  window.kind = WindowKind::required;
  window.title = question(wanted, !found.empty());
  window.headings = msg(2995);
  window.rows = &rows;
  // Without an instrument to use the safe answer is not to begin.
  window.buttons = {{answer::ok, msg(2992), !found.empty()},
                    {answer::no, msg(2993), false},
                    {answer::terminate, msg(2994), found.empty()}};
  std::size_t row = 0;
  const int code = platform().desk != nullptr ? platform().desk->choose(window, row) : answer::failed;
  switch (code) {
    case answer::ok:
      if (found.empty()) {
        wanted.served = Served::by_hand;
        return check_result::go_on;
      }
      if (row >= found.size()) return run_error(run, 2567, static_cast<int>(row)) ? 0 : check_result::failed;
      use(wanted, found[row]);
      return check_result::go_on;
    case answer::no: wanted.served = Served::skipped; return check_result::go_on;
    case answer::terminate: return check_result::cancelled;
    case answer::failed: run_error(run, 2566); return check_result::failed;
    default: run_error(run, 2568, code); return check_result::failed;
  }
}

// All required instruments with what serves for each.
int show_list(RunState& run) {
  std::vector<std::string> texts;
  for (const RequiredInstrument& one : run.pipeline.required)
    texts.push_back(required_text(one) + '\t' + served_text(one));
  const TextRows rows(std::move(texts));
  ChoiceWindow window;
  window.kind = WindowKind::required;
  window.title = msg(2991);
  window.headings = msg(2995);
  window.rows = &rows;
  window.buttons = {standard_button(button_row::ok, answer::ok, true),
                    standard_button(button_row::cancel, answer::terminate)};
  std::size_t row = 0;
  const int code = platform().desk != nullptr ? platform().desk->choose(window, row) : answer::failed;
  if (code == answer::ok) return check_result::go_on;
  if (code == answer::terminate) return check_result::cancelled;
  run_error(run, 2566);
  return check_result::failed;
}

// --- The check -------------------------------------------------------------------------------------------------

// One instrument. `was_open` is set if it did not settle itself.
int settle(RunState& run, RequiredInstrument& wanted, bool& was_open) {
  const std::vector<std::uint16_t> found = candidates(wanted);
  if (found.size() == 1) {
    was_open = was_open || found[0] != wanted.code;
    use(wanted, found[0]);
    return check_result::go_on;
  }
  was_open = true;
  if (found.empty() && startup_config().req_std_prompt == 0) {
    wanted.served = Served::skipped;
    return check_result::go_on;
  }
  return ask_for(run, wanted, found);
}

int check_list(RunState& run) {
  dev_substitute(0, 0);
  dev_clear_flags(0, device_flag::required);
  bool was_open = false;
  for (RequiredInstrument& wanted : run.pipeline.required) {
    const int result = settle(run, wanted, was_open);
    if (result != check_result::go_on) return result;
  }
  const std::int16_t when = startup_config().show_req_instr;
  if (run.pipeline.required.empty() || (when != list_always && !(when == list_when_open && was_open)))
    return check_result::go_on;
  return show_list(run);
}

// Without a list nobody can say what is on the bench.
int tell_unchecked(RunState& run) {
  std::string names;
  for (RequiredInstrument& one : run.pipeline.required) {
    one.served = Served::unchecked;
    names += (names.empty() ? "" : ", ") + required_text(one);
  }
  if (!names.empty()) msgp(30608, names);
  return check_result::go_on;
}

// The editor must not change the instrument configuration under a run. Where this program cannot write the lock it has
// said so; that is no reason to keep a laboratory from its work.
bool reserve(RunState& run) {
  const bool any = std::any_of(
      run.pipeline.required.begin(), run.pipeline.required.end(), [](const RequiredInstrument& one) {
        const InstrumentRecord* row = one.served == Served::configured ? dev_find(one.code) : nullptr;
        return row != nullptr && row->address.interface != DeviceInterface::none;
      });
  if (!any || reserved() || !may_write_beside(config_path())) return true;
  // A lock of this program's own is left over from a run that died.
  static_cast<void>(dev_lock(DevLock::clear_own));
  const DevLockResult taken = dev_lock(DevLock::take);
  reserved() = taken == DevLockResult::done;
  return taken != DevLockResult::failed;
}

int check_bus(const RunState& run) {
  if (!run.pipeline.pre_run.ieee || startup_config().ib_nport != 0) return check_result::go_on;
  const int code = yesnoph(2498);
  if (code == answer::yes) return check_result::go_on;
  return code == answer::failed ? check_result::failed : check_result::cancelled;
}

}  // namespace

bool merge_required(RunState& run, const RequiredInstruments& table) {
  std::vector<RequiredInstrument>& list = run.pipeline.required;
  const std::size_t count = std::min<std::size_t>(table.count, table.entries.size());
  for (std::size_t i = 0; i < count; ++i) {
    const RequiredInstruments::Entry& entry = table.entries[i];
    if (entry.instrument == 0) continue;
    auto found = std::find_if(list.begin(), list.end(),
                              [&](const RequiredInstrument& one) { return one.code == entry.instrument; });
    if (found == list.end()) {
      if (list.size() == RequiredInstruments::max_entries)
        return run_error(run, 30648, RequiredInstruments::max_entries);
      RequiredInstrument added;
      added.code = entry.instrument;
      found = list.insert(found, std::move(added));
    }
    found->option_mask =
        with_options(entry.instrument, static_cast<unsigned>(found->option_mask | entry.option_mask));
    RequiredInstrument::AnyOf group;
    for (const RequiredInstruments::Alternative& one : entry.alternatives) {
      if (one.option == 0) break;
      group.push_back({one.option, one.option_mask});
    }
    std::vector<RequiredInstrument::AnyOf>& groups = found->accessories;
    if (!group.empty() && std::find(groups.begin(), groups.end(), group) == groups.end())
      groups.push_back(std::move(group));
  }
  return true;
}

void set_exclusive_options(std::span<const ExclusiveOptions> rows) { exclusive_options() = rows; }

int check_required(RunState& run) {
  if (run.demo_mode) return check_result::go_on;
  const int result = device_list_stands() ? check_list(run) : tell_unchecked(run);
  if (result != check_result::go_on) return result;
  if (!reserve(run)) return check_result::failed;
  return check_bus(run);
}

void release_required(RunState&) {
  if (!reserved()) return;
  reserved() = false;
  static_cast<void>(dev_lock(DevLock::release));
}

std::string required_text(const RequiredInstrument& instrument) {
  std::string text = instrument_text(instrument.code) + options_text(instrument.option_mask);
  for (const RequiredInstrument::AnyOf& group : instrument.accessories) {
    for (std::size_t i = 0; i < group.size(); ++i)
      text += (i == 0 ? " (" : " | ") + instrument_text(group[i].code) + options_text(group[i].option_mask);
    text += ")";
  }
  return text;
}

}  // namespace orvane
