#include "procedure/pipeline/run_test.h"

#include "config/startup_config.h"
#include "instruments/accuracy_choice.h"
#include "instruments/bench_load.h"
#include "instruments/device_assets.h"
#include "instruments/device_list.h"
#include "instruments/instrument_names.h"
#include "platform/platform.h"
#include "procedure/file/load.h"
#include "procedure/file/memory.h"
#include "procedure/file/proc_dir.h"
#include "procedure/pipeline/database.h"
#include "procedure/pipeline/entry_forms.h"
#include "procedure/pipeline/required.h"
#include "procedure/pipeline/run_ends.h"
#include "procedure/pipeline/scan.h"
#include "procedure/pipeline/select_procedure.h"
#include "procedure/run/call.h"
#include "procedure/run/loop.h"
#include "reports/died_run.h"
#include "reports/post_run.h"
#include "results/results.h"
#include "settings/fmt.h"
#include "state/pump.h"
#include "state/report.h"
#include "state/run_variables.h"

namespace orvane {
namespace {

bool find_entry(const std::string& directory_path, ProcDirEntry& entry) {
  const int handle = pd_open(directory_path, pd_mode_read);
  if (handle == 0) return false;
  const bool found = pd_find(handle, entry);
  return pd_close(handle) && found;
}

bool read_threshold(RunState& run, const Procedure& procedure) {
  for (const ProcNode* node = procedure.head; node != nullptr; node = node->next) {
    if (node->record != nullptr && node->record->code() == header_code::adjustment_threshold) {
      run.adjust_threshold = node->record->get(field::adjustment_threshold);
      return true;
    }
  }
  return run_error(run, 111);
}

void abort_menu(bool run_is_on) {
  if (platform().desk != nullptr) platform().desk->enable_abort_menu(run_is_on);
}

// One run from the choice of its procedure to its end. Every step returns a run_result; anything but finished ends
// the road there. What was opened on the way is closed by the destructor.
class TestRun {
 public:
  TestRun(RunState& run, std::string_view name)
      : run_(run), name_(name), uut_first_(startup_config().UUTPromptFirst != 0) {}
  ~TestRun() {
    release_required(run_);
    if (roads_ != nullptr) roads_->close_session(run_);
    if (begun_) clear_display(run_);
    if (begun_) run_files_release();
  }
  TestRun(const TestRun&) = delete;
  TestRun& operator=(const TestRun&) = delete;

  int work() {
    using Step = int (TestRun::*)();
    static constexpr Step steps[] = {
        &TestRun::load_bench, &TestRun::recover,      &TestRun::ask_for_demo,   &TestRun::open_database,
        &TestRun::select,     &TestRun::load,         &TestRun::uut_setup,      &TestRun::threshold,
        &TestRun::scan,       &TestRun::prepare_data, &TestRun::ask_start_data, &TestRun::check_standards,
        &TestRun::begin,
    };
    run_.clear(run_flag::stop_test);
    clear_abort();
    for (const Step step : steps) {
      if (abort_requested()) return given_up_by_abort();
      if (const int result = (this->*step)(); result != run_result::finished) return result;
    }
    execute();
    ask_end_data();
    save();
    if (run_.has(run_flag::stop_test)) return run_result::failed;
    return abandoned_ ? run_result::given_up : run_result::finished;
  }

 private:
  // An Abort in a window in front of the run: its start would forget the request.
  static int given_up_by_abort() {
    clear_abort();
    return run_result::given_up;
  }

  static int as_result(bool done) { return done ? run_result::finished : run_result::failed; }

  // What stands on the bench is known before anything asks for it. A list that is at fault has been told and stands
  // empty: its instruments are then missing by name.
  int load_bench() {
    if (startup_config().config.empty()) return run_result::finished;
    return as_result(dev_reload_if_changed() || run_.demo_mode || device_list_stands());
  }

  int recover() {
    if (another_run_is_on()) return as_result(errp(31401, startup_config().workdir));
    return as_result(recover_died_run(run_) && died_run_save(run_));
  }

  int ask_for_demo() {
    if (!run_.demo_mode || startup_config().rt_demo_prompt == 0) return run_result::finished;
    const int code = yesnoph(4339);
    if (code == answer::no) return run_result::given_up;
    return as_result(code == answer::yes);
  }

  int open_database() {
    run_entries_clear(run_);
    roads_ = database_roads();
    return as_result(roads_ == nullptr || roads_->open_session(run_));
  }

  int select() {
    procedure_ = acquire_main_procedure();
    std::string name = name_;
    if (name.empty()) {
      if (const int result = select_procedure(run_, name); result != run_result::finished) return result;
    }
    run_.pipeline.times.prepared_ticks = platform().clock->ticks();
    procedure_->directory = ProcDirEntry();
    procedure_->directory.dir_flags = runnable_kinds;
    procedure_->directory.name_count = 1;
    procedure_->directory.names[0] = name;
    return as_result(find_entry(procedure_directory_file(), procedure_->directory));
  }

  int load() {
    if (!load_procedure(*procedure_, startup_config().procdir, run_.has(run_flag::test_run)))
      return run_result::failed;
    return as_result(procedure_->has(procedure_flag::required) || run_error(run_, 2502));
  }

  int uut_setup() { return uut_first_ && roads_ != nullptr ? roads_->uut_setup(run_) : run_result::finished; }

  int threshold() { return as_result(read_threshold(run_, *procedure_)); }

  int scan() {
    run_.pipeline.standard_overdue = false;
    if (!scan_procedure(run_, procedure_)) return run_result::failed;
    switch (check_required(run_)) {
      case check_result::go_on: return as_result(acc_select_for_run(run_));
      case check_result::cancelled: return run_result::given_up;
      default: return run_result::failed;
    }
  }

  // The accuracy data and the unit's data are those of an actual run: a Test Run of the editor has none.
  int prepare_data() {
    queue_clear();
    if (roads_ == nullptr) return run_result::finished;
    if (!run_.has(run_flag::test_run)) {
      if (startup_config().acc_check != 0 && !roads_->check_accuracy(run_)) return run_result::failed;
      const int result = uut_first_ ? run_result::finished : roads_->uut_setup(run_);
      if (result != run_result::finished) return result;
    }
    return as_result(roads_->open_results(run_));
  }

  int ask_start_data() {
    std::vector<EntryFault> faults;
    if (!read_data_entry(startup_config().bcf, entry_, faults)) {
      report_entry_faults(faults);
      return as_result(run_error(run_, 2508, startup_config().bcf));
    }
    int result = entry_.environment_at_start ? ask_environment(run_) : run_result::finished;
    if (abort_requested()) return given_up_by_abort();
    if (result == run_result::finished) result = ask_start_form(run_, entry_.start);
    if (result == run_result::failed) run_error(run_, 2508, startup_config().bcf);
    return result;
  }

  // Nobody calibrates a standard with itself.
  int check_standards() {
    const std::string* asset = run_variable(run_, "UUT_CODE$");
    if (run_.demo_mode || asset == nullptr || dev_self_calibration_check(run_, *asset))
      return run_result::finished;
    return run_.has(run_flag::stop_test) ? run_result::failed : run_result::given_up;
  }

  int begin() {
    if (!run_files_hold()) return run_result::failed;
    begun_ = true;
    run_.run_name = procedure_->name;
    if (platform().desk != nullptr)
      platform().desk->run_begins(
          {procedure_->name, header_text(*procedure_, header_code::revision), run_.has(run_flag::test_run)});
    write_marker(run_, "underway");
    abort_menu(true);
    if (initialise_run(run_, *procedure_) && run_files_write(run_, required_standards()))
      return run_result::finished;
    finish_run(run_);
    abort_menu(false);
    return run_result::failed;
  }

  std::vector<std::string> required_standards() const {
    std::vector<std::string> names;
    for (const RequiredInstrument& one : run_.pipeline.required) {
      if (one.served != RequiredInstrument::Served::skipped)
        names.emplace_back(instrument_name(one.used != 0 ? one.used : one.code));
    }
    return names;
  }

  void execute() {
    RunTimes& times = run_.pipeline.times;
    times.first_ticks = platform().clock->ticks();
    run_.set(run_flag::run_active);
    run_procedure(run_, procedure_);
    run_.clear(run_flag::run_active);
    times.last_ticks = platform().clock->ticks();
    finish_run(run_);
    if (run_.demo_mode) msgp(test_status(run_) == "COMPLETED" ? 5019 : 5020);
    abort_menu(false);
  }

  // The data behind the run. A cancel abandons the run: nothing of it is saved.
  void ask_end_data() {
    int result = entry_.environment_at_end ? ask_environment(run_) : run_result::finished;
    if (result == run_result::finished) result = ask_end_form(run_, entry_.end);
    if (result == run_result::failed) run_error(run_, 2508, startup_config().bcf);
    abandoned_ = result != run_result::finished;
  }

  void save() {
    if (!abandoned_) keep_results();
    run_.vset.clear();
    fmt_clear(run_);
  }

  // A Test Run of the editor leaves no reports.
  void keep_results() {
    bool kept = true;
    if (roads_ == nullptr) {
      static_cast<void>(r_write_all(run_));  // what failed has been told; the results stay
      kept = run_.has(run_flag::test_run) || post_run(run_);
    } else {
      kept = roads_->post_run(run_);
    }
    if (!kept) run_.set(run_flag::stop_test);
  }

  RunState& run_;
  const std::string name_;
  const bool uut_first_;
  const DatabaseRoads* roads_ = nullptr;
  Procedure* procedure_ = nullptr;
  DataEntry entry_;
  bool begun_ = false;
  bool abandoned_ = false;
};

}  // namespace

int run_test(RunState& run, std::string_view name) { return TestRun(run, name).work(); }

bool procedure_names(std::vector<std::string>& names) {
  std::vector<NpdRow> rows;
  if (!npd_rows(procedure_directory_file(), rows)) return false;
  for (NpdRow& row : rows) names.push_back(std::move(row.name));
  return true;
}

OverallResult overall_result(const RunState& run) { return r_count(run.results); }

}  // namespace orvane
