#include "procedure/file/check.h"

#include "messages/catalogue.h"
#include "procedure/file/procedure_format.h"
#include "state/fsc.h"

namespace orvane {
namespace {

/// Goes through the lines once, and knows the statement that the latest record left open.
class Check {
 public:
  explicit Check(const Procedure& procedure) : procedure_(procedure) {}

  std::vector<ProcedureFault> run() {
    for (const ProcNode* node = procedure_.head; node != nullptr; node = node->next) {
      ++line_;
      const std::uint16_t code = node->record->get(field::code);
      if ((code & code_class::executable) != 0 && (code & code_class::listing) == 0) check_line(*node, code);
    }
    if (open_code_ != 0) broken_off();
    return std::move(faults_);
  }

 private:
  template <class... A>
  void add(int line, int number, const A&... args) {
    faults_.push_back({"line " + std::to_string(line), number, msg(number, args...)});
  }

  void check_line(const ProcNode& node, std::uint16_t code) {
    const FscRow* row = fsc_row(code);
    if (row == nullptr) add(line_, 30108, code);
    if ((code & code_class::branching) != 0 && procedure_.branch_target(node) == nullptr)
      add(line_, 30107, fsc_name(fsc_ordinal(code)));
    check_statement(code, node.record->get(field::line_flags));
  }

  void check_statement(std::uint16_t code, std::uint16_t flags) {
    const bool first = (flags & line_flag::first) != 0;
    if (open_code_ != 0 && (first || code != open_code_)) broken_off();
    if (first) open_line_ = line_;
    open_code_ = (flags & line_flag::last) != 0 || (!first && open_code_ == 0) ? std::uint16_t{0} : code;
  }

  void broken_off() {
    add(open_line_, 30110, fsc_name(fsc_ordinal(open_code_)));
    open_code_ = 0;
  }

  const Procedure& procedure_;
  std::vector<ProcedureFault> faults_;
  int line_ = 0;
  int open_line_ = 0;
  std::uint16_t open_code_ = 0;
};

std::uint64_t stored_size(const Procedure& procedure) {
  const std::uint64_t table =
      procedure.has(procedure_flag::required) ? required_size(procedure.format_version) : 0;
  return FileHeader::size + table +
         (std::uint64_t{procedure.main_count} + procedure.listing_count) * FscRecord::size;
}

}  // namespace

std::vector<ProcedureFault> check_procedure(const Procedure& procedure,
                                            std::optional<std::uint64_t> file_size) {
  std::vector<ProcedureFault> faults = Check(procedure).run();
  const std::uint64_t stored = stored_size(procedure);
  if (file_size && *file_size > stored)
    faults.push_back({"offset " + std::to_string(stored), 30109, msg(30109, *file_size - stored)});
  return faults;
}

}  // namespace orvane
