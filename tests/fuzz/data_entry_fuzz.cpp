// Hostile texts for the readers of what a laboratory writes for the start of a run: data entry files, workload files,
// readings of a sensor. Whatever a data entry file is read to, its forms stay within their limits, each fault names
// its place, and what a field takes can be taken again as it was kept.
#include <cstdlib>
#include <set>
#include <string>

#include "instruments/bus_address.h"
#include "instruments/room_climate.h"
#include "procedure/pipeline/data_entry.h"
#include "procedure/pipeline/select_procedure.h"

using namespace orvane;

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

void check_form(const EntryForm& form) {
  require(form.fields.size() <= entry_field_limit);
  std::set<std::string> names;
  for (FormField field : form.fields) {
    if (field.kind == FieldKind::note) continue;
    require(names.insert(field.name).second);
    require(field.length >= 1 && field.length <= entry_length_limit);
    require(field.choices.size() <= entry_choice_limit);
    require(!entry_variable_written(field.name));
    if (!entry_fault(field).empty() || field.read_only) continue;
    field.text = entry_value(field);
    require(entry_fault(field).empty());
  }
}

void data_entry(const std::string& text) {
  DataEntry entry;
  std::vector<EntryFault> faults;
  const bool sound = parse_data_entry(text, "file", entry, faults);
  require(sound == faults.empty());
  for (const EntryFault& fault : faults) require(fault.number > 0 && fault.text.starts_with("file:"));
  if (!sound) return;
  check_form(entry.start);
  check_form(entry.end);
}

void other_texts(const std::string& text) {
  std::vector<WorkloadRow> rows;
  int line = 0;
  if (parse_workload(text, rows, line)) {
    for (const WorkloadRow& row : rows) require(!row.procedure.empty());
  } else {
    require(line > 0);
  }
  std::string reason;
  if (const auto climate = parse_room_climate(text, reason)) {
    require(climate->humidity >= 0 && climate->humidity <= 100);
  } else {
    require(!reason.empty());
  }
  for_each_address(text, [](std::string_view argument) {
    DevAddress address;
    for (const AddressKind kind : {AddressKind::bus, AddressKind::port, AddressKind::either}) {
      if (parse_address(argument, kind, address) != 0) continue;
      require(address.bus.primary <= BusAddress::highest_primary && address.port <= DevAddress::lemo_port);
    }
    return true;
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (data[0] % 2 == 0) {
    data_entry(text);
  } else {
    other_texts(text);
  }
  return 0;
}
