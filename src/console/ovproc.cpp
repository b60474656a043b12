#include "console/ovproc.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <iterator>
#include <set>

#include "console/record_json.h"
#include "console/report_collector.h"
#include "console/source_text.h"
#include "messages/encoding.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "procedure/file/ascii.h"
#include "procedure/file/check.h"
#include "procedure/file/load.h"
#include "procedure/file/proc_dir.h"
#include "procedure/file/render.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::size_t source_limit = 32U << 20;
constexpr std::uint8_t every_kind = ProcDirEntry::status_d | ProcDirEntry::status_p | ProcDirEntry::kind_e |
                                    ProcDirEntry::kind_h | ProcDirEntry::kind_blank;

/// Puts the collector in the desk's place while a command runs, and writes what it collected.
class Reports {
 public:
  Reports() : before_(platform().desk) { platform().desk = &collector_; }
  ~Reports() { platform().desk = before_; }
  Reports(const Reports&) = delete;
  Reports& operator=(const Reports&) = delete;

  /// Writes the reports, each behind `head`. The result is that of a command that failed.
  int write(std::ostream& err, const std::string& head = {}) {
    for (const std::string& text : collector_.take()) err << head << shown(text) << '\n';
    return exit_status::failed;
  }

 private:
  // A report may name a path, which is UTF-8 as it came; everything else is Windows-1252.
  static std::string shown(const std::string& text) {
    std::string unused;
    return cp1252_from_utf8(text, unused) ? text : utf8_from_cp1252(text);
  }

  Operator* before_;
  ReportCollector collector_;
};

int finished(std::ostream& out) {
  out.flush();
  return out ? exit_status::ok : exit_status::failed;
}

// --- compile -------------------------------------------------------------------------------------------------

struct Source {
  std::string file;
  Procedure procedure;
};

bool read_source(const std::string& file, std::istream& in, std::string& bytes) {
  if (file == "-") {
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return bytes.size() <= source_limit || errp(30105, file, source_limit >> 20);
  }
  switch (read_file(file, source_limit, bytes)) {
    case ReadResult::ok: return true;
    case ReadResult::too_large: return errp(30105, file, source_limit >> 20);
    default: return errp(30104, file);
  }
}

bool compile_source(Source& source, ConsoleStreams& streams, Reports& reports) {
  std::string bytes;
  if (!read_source(source.file, streams.in, bytes)) {
    reports.write(streams.err, source.file + ": ");
    return false;
  }
  std::vector<CompileFault> lost, faults;
  const std::string text = decode_source(bytes, lost);
  const bool ok = compile_procedure(text, source.procedure, faults);
  // What stands for a lost character is no fault of its own.
  std::set<int> lost_lines;
  for (const CompileFault& fault : lost) lost_lines.insert(fault.line);
  std::erase_if(faults, [&](const CompileFault& fault) { return lost_lines.contains(fault.line); });
  faults.insert(faults.end(), lost.begin(), lost.end());
  std::sort(faults.begin(), faults.end(), [](const auto& a, const auto& b) { return a.line < b.line; });
  for (const CompileFault& fault : faults)
    streams.err << source.file << ':' << fault.line << ':' << fault.column << ": "
                << (lost_lines.contains(fault.line) ? fault.reason : utf8_from_cp1252(fault.reason)) << '\n';
  return ok && lost.empty();
}

bool names_differ(const std::vector<Source>& sources) {
  for (std::size_t i = 0; i < sources.size(); ++i) {
    for (std::size_t k = 0; k < i; ++k) {
      if (ascii_same(sources[i].procedure.name, sources[k].procedure.name))
        return errp(30106, sources[i].file, sources[k].file, sources[i].procedure.name);
    }
  }
  return true;
}

bool write_sources(std::vector<Source>& sources, const std::string& directory, std::ostream& out) {
  std::vector<PdAddition> additions;
  additions.reserve(sources.size());
  for (const Source& source : sources) additions.push_back({source.procedure.name, {}});
  if (!pd_choose_file_names(directory, additions)) return false;
  for (std::size_t i = 0; i < sources.size(); ++i) {
    std::string path;
    if (!join_path(path, procedure_path_limit, directory, additions[i].file_name))
      return errp(407, directory);
    if (!write_procedure(sources[i].procedure, path)) return false;
  }
  if (!pd_add(directory, additions)) return false;
  for (const PdAddition& one : additions) out << one.file_name << ' ' << utf8_from_cp1252(one.name) << '\n';
  return true;
}

// --- list and dump -------------------------------------------------------------------------------------------

bool find_entry(const std::string& directory, const std::string& name, ProcDirEntry& entry) {
  std::string path;
  if (!join_path(path, procedure_path_limit, directory, proc_dir_name)) return errp(911, directory);
  const int handle = pd_open(path, pd_mode_read);
  if (handle == 0) return false;
  entry = {};
  entry.dir_flags = every_kind;
  entry.name_count = 1;
  entry.names[0] = cp1252_from_either(name);
  const bool found = pd_find(handle, entry);
  return pd_close(handle) && found;
}

void write_listing(const Procedure& procedure, std::ostream& out) {
  for (const ProcNode* node = procedure.head; node != nullptr; node = node->next)
    out << printable_line(node->shown()) << '\n';
}

// Calls `use` for every record in the order of the file: the main records, then the listing records.
template <class Use>
void each_record(const Procedure& procedure, Use use) {
  for (const bool listing : {false, true}) {
    for (const ProcNode* node = procedure.head; node != nullptr; node = node->next) {
      if (((node->record->get(field::code) & code_class::listing) != 0) == listing) use(*node->record);
    }
  }
}

nlohmann::ordered_json header_json(const Procedure& procedure) {
  nlohmann::ordered_json json;
  json["version"] = procedure.format_version;
  json["compiler"] = utf8_from_cp1252(std::string_view(procedure.signature).substr(2));
  json["flags"] = procedure.flags & (procedure_flag::writer | procedure_flag::required);
  json["main"] = procedure.main_count;
  json["listing"] = procedure.listing_count;
  return json;
}

nlohmann::ordered_json required_json(const RequiredInstruments& table) {
  nlohmann::ordered_json rows = nlohmann::ordered_json::array();
  for (std::size_t i = 0; i < table.count; ++i) {
    const RequiredInstruments::Entry& entry = table.entries[i];
    nlohmann::ordered_json row = {{"instrument", entry.instrument}, {"option_mask", entry.option_mask}};
    row["alternatives"] = nlohmann::ordered_json::array();
    for (const auto& one : entry.alternatives) {
      if (one.option == 0) break;
      row["alternatives"].push_back({{"option", one.option}, {"option_mask", one.option_mask}});
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

// Written record by record: a whole file as one object would take hundreds of megabytes.
void write_json(const Procedure& procedure, std::ostream& out) {
  nlohmann::ordered_json header = header_json(procedure);
  if (procedure.required != nullptr) header["required"] = required_json(*procedure.required);
  std::string head = header.dump();
  head.pop_back();
  out << head << ",\n\"records\":[";
  const char* between = "\n";
  each_record(procedure, [&](const FscRecord& record) {
    out << between
        << record_json(record).dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    between = ",\n";
  });
  out << "\n]}\n";
}

void write_fields(const nlohmann::ordered_json& json, const std::string& head, std::ostream& out) {
  for (const auto& [name, value] : json.items()) {
    if (value.is_structured() && !value.empty()) {
      write_fields(value, head + name + '.', out);
    } else {
      out << "  " << head << name << ": "
          << (value.is_string() ? printable_line(cp1252_from_either(value.get_ref<const std::string&>()))
                                : value.dump())
          << '\n';
    }
  }
}

void write_text(const Procedure& procedure, std::ostream& out) {
  out << "header\n";
  write_fields(header_json(procedure), {}, out);
  if (procedure.required != nullptr)
    write_fields({{"required", required_json(*procedure.required)}}, {}, out);
  int number = 0;
  each_record(procedure, [&](const FscRecord& record) {
    out << "record " << ++number << '\n';
    write_fields(record_json(record), {}, out);
  });
}

// --- dir -----------------------------------------------------------------------------------------------------

bool write_entries(int handle, std::ostream& out) {
  for (int line = 0; line < pd_line_count(handle); ++line) {
    ProcDirEntry entry;
    entry.dir_flags = every_kind;
    if (!pd_search(handle, "", line, false, entry)) return (entry.dir_flags & ProcDirEntry::end_reached) != 0;
    for (int i = 0; i < entry.name_count; ++i)
      out << entry.file_name << ' ' << utf8_from_cp1252(entry.names[static_cast<std::size_t>(i)]) << '\n';
    line = entry.last_line;
  }
  return true;
}

// --- check ---------------------------------------------------------------------------------------------------

bool check_file(const std::string& file, std::ostream& err, Reports& reports) {
  Procedure procedure;
  std::uint64_t offset = 0;
  if (!load_procedure_file(procedure, file, true, &offset)) {
    reports.write(err, file + ": offset " + std::to_string(offset) + ": ");
    return false;
  }
  const auto faults =
      check_procedure(procedure, is_ordinary_file(file) ? file_size(file) : std::optional<std::uint64_t>());
  for (const ProcedureFault& fault : faults)
    err << file << ": " << fault.where << ": E" << fault.number << ": " << utf8_from_cp1252(fault.text)
        << '\n';
  return faults.empty();
}

}  // namespace

int ovproc_compile(const std::vector<std::string>& files, const std::string& directory,
                   ConsoleStreams streams) {
  Reports reports;
  std::vector<Source> sources;
  bool ok = true;
  for (const std::string& file : files) {
    sources.push_back({file, {}});
    ok = compile_source(sources.back(), streams, reports) && ok;
  }
  if (!ok) return exit_status::failed;
  std::ostringstream written;
  if (!names_differ(sources) || !write_sources(sources, directory, written))
    return reports.write(streams.err);
  streams.out << written.str();
  return finished(streams.out);
}

int ovproc_list_file(const std::string& file, ConsoleStreams streams) {
  Reports reports;
  Procedure procedure;
  if (!load_procedure_file(procedure, file, true)) return reports.write(streams.err, file + ": ");
  write_listing(procedure, streams.out);
  return finished(streams.out);
}

int ovproc_list_name(const std::string& directory, const std::string& name, ConsoleStreams streams) {
  Reports reports;
  Procedure procedure;
  if (!find_entry(directory, name, procedure.directory) || !load_procedure(procedure, directory, true))
    return reports.write(streams.err);
  write_listing(procedure, streams.out);
  return finished(streams.out);
}

int ovproc_dump(const std::string& file, bool json, ConsoleStreams streams) {
  Reports reports;
  Procedure procedure;
  if (!load_procedure_file(procedure, file, true)) return reports.write(streams.err, file + ": ");
  (json ? write_json : write_text)(procedure, streams.out);
  return finished(streams.out);
}

int ovproc_dir_list(const std::string& directory, ConsoleStreams streams) {
  Reports reports;
  std::string path;
  if (!join_path(path, procedure_path_limit, directory, proc_dir_name)) errp(911, directory);
  const int handle = path.empty() ? 0 : pd_open(path, pd_mode_read);
  if (handle == 0) return reports.write(streams.err);
  std::ostringstream entries;
  const bool whole = write_entries(handle, entries);
  const bool closed = pd_close(handle);
  streams.out << entries.str();
  return whole && closed ? finished(streams.out) : reports.write(streams.err);
}

int ovproc_dir_sort(const std::string& directory, ConsoleStreams streams) {
  Reports reports;
  std::string path;
  const bool joined = join_path(path, procedure_path_limit, directory, proc_dir_name) || errp(911, directory);
  return joined && pd_sort(path, false) ? exit_status::ok : reports.write(streams.err);
}

int ovproc_dir_find(const std::string& directory, const std::string& name, ConsoleStreams streams) {
  Reports reports;
  ProcDirEntry entry;
  if (!find_entry(directory, name, entry)) return reports.write(streams.err);
  const auto matched = static_cast<std::size_t>(entry.matched_line - entry.first_line);
  streams.out << entry.file_name << ' ' << utf8_from_cp1252(entry.names[matched]) << '\n';
  return finished(streams.out);
}

int ovproc_check(const std::vector<std::string>& files, ConsoleStreams streams) {
  Reports reports;
  bool sound = true;
  for (const std::string& file : files) sound = check_file(file, streams.err, reports) && sound;
  return sound ? exit_status::ok : exit_status::failed;
}

int ovproc(std::vector<std::string> arguments, ConsoleStreams streams) {
  CLI::App app("Compiles, lists and checks procedures of the Orvane Run Time.", "ovproc");
  app.set_version_flag("--version", "ovproc " ORVANE_VERSION);
  app.require_subcommand(1);
  std::vector<std::string> files;
  std::string file, name, directory;
  bool json = false;
  const auto add_directory = [&](CLI::App* command) {
    command->add_option("--procdir", directory, "the procedure directory (default: the current folder)");
  };

  CLI::App* compile =
      app.add_subcommand("compile", "compile source text; adds or replaces the procedures in proc.dir");
  compile->add_option("SOURCE", files, "source files, - for standard input")->required();
  add_directory(compile);
  CLI::App* list = app.add_subcommand("list", "print a procedure as source text");
  list->add_option("FILE", file, "a compiled file; with --procdir the name of a procedure")->required();
  add_directory(list);
  CLI::App* dump = app.add_subcommand("dump", "print header and records, field by field");
  dump->add_option("FILE", file, "a compiled file")->required();
  dump->add_flag("--json", json, "as one JSON object");
  CLI::App* check = app.add_subcommand("check", "read compiled files and report every fault");
  check->add_option("FILE", files, "compiled files")->required();
  CLI::App* dir = app.add_subcommand("dir", "work with proc.dir");
  dir->require_subcommand(1);
  CLI::App* dir_list = dir->add_subcommand("list", "print file and name of every procedure");
  CLI::App* dir_sort = dir->add_subcommand("sort", "sort the directory by name");
  CLI::App* dir_find = dir->add_subcommand("find", "print file and name of one procedure");
  dir_find->add_option("NAME", name, "the procedure's name, in any case")->required();
  for (CLI::App* command : {dir, dir_list, dir_sort, dir_find}) add_directory(command);

  try {
    std::reverse(arguments.begin(), arguments.end());
    app.parse(std::move(arguments));
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success))
      return app.exit(error, streams.out, streams.err);
    streams.err << "ovproc: " << error.what() << " (ovproc --help tells more)\n";
    return exit_status::usage;
  }
  const bool by_name = !directory.empty();
  if (directory.empty()) directory = ".";
  if (compile->parsed()) return ovproc_compile(files, directory, streams);
  if (list->parsed())
    return by_name ? ovproc_list_name(directory, file, streams) : ovproc_list_file(file, streams);
  if (dump->parsed()) return ovproc_dump(file, json, streams);
  if (check->parsed()) return ovproc_check(files, streams);
  if (dir_list->parsed()) return ovproc_dir_list(directory, streams);
  if (dir_sort->parsed()) return ovproc_dir_sort(directory, streams);
  return ovproc_dir_find(directory, name, streams);
}

}  // namespace orvane
