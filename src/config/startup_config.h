// The startup configuration: one text file of "KEY = VALUE" lines, read once at the start. Lines that are
// empty or begin with "#" or ";" are skipped; a key counts in whatever section it stands. Every setting is a
// member of StartupConfig, named as its key; docs/formats.md tells what each key means and takes.
//
//   [startup]
//   # folders
//   procdir = procedures
//   oot_lim = 200
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The default of a number that has no meaning until it is configured.
constexpr double not_configured = std::numeric_limits<double>::max();

struct BeepKey {
  std::int16_t seconds = 0;
  std::int16_t count = 0;
};

/// Up to two values, for the first and the second IEEE-488 board.
struct PairKey {
  std::int16_t count = 0;
  std::array<std::uint16_t, 2> value{};
};

/// Texts are empty when they are unset. Folders and files are as configured, relative ones joined to the
/// folder of the configuration file. Numbers of 16 bits are 0 (no) and 1 (yes) where the table does not say
/// otherwise.
struct StartupConfig {
  std::string accdir, bcf, cal_cert_template, calhist_results, calhist_template, ColorFile, config,
      correctdir, error_log, fail_prompt, FreqRefAccMode, FreqRefDevName, gb_init, gb_table, helpdir, mfile,
      pass_prompt, password_dir, picdir, procdir, prompt, RifWifDir, RinfBase, RinfDir, rslt_col_fl_template,
      rslt_col_template, rslt_fl_template, rslt_page, rslt_page_fl_template, rslt_template, rsltdir, trace,
      trace_template, user_cwd, user_data_dir, user_prog_dir, varfile, workdir, workload_data,
      workload_template;
  std::int16_t SRC4K_clr_sdc = 1, PRC1_488 = 1, PRC1_488_iterm = 64;
  double PRC1_PressureTimeout = 50.0;
  std::int16_t MFC3LFC = 0;
  double DAVL_8901B_Timeout = 60.0;
  std::string MSC1_mfg;
  std::int16_t MSC1_ShowNearCalDue = 0, MSC1_ShowPastCalDue = 0;
  std::string OSC3_mfg;
  std::int16_t OSC3_ShowNearCalDue = 0, OSC3_ShowPastCalDue = 0, accf_acc_rel = 1, acc_check = 1,
               acc_conflict = 0;
  double acc_overlap = 10.0, acc_range_overlap = 10.0, AdjustmentThreshold = 70.0;
  std::int16_t AgilentN5530S = 0, ask_c_default = 1, ask_x_default = 1, ask_z_default = 1, auto_author = 1;
  BeepKey beep;
  std::int16_t BraceEmpty = 1, BraceEval = 1, CalResults = 1, CaretWidth = 0, ce_no_check_com = 0,
               ColorMode = 1, ConnDisconn = 1, cor_exact = 0, OSC3_TriggerCable1 = 0, OSC3_TriggerCable2 = 0,
               OSC3_TriggerCable3 = 0, OSC3_TriggerCable4 = 0, OSC3_TriggerCable5 = 0, database = 1;
  std::string data_source_name;
  std::int16_t db_proc = 1, dos_sc_eval = 1, dtr_disable = 0, due_date_in_cal = 0;
  double epsfactor = 0.0;
  std::int16_t export_results = 0, ExtendedUnits = 1, forcecase = 1;
  double gbf = not_configured;
  std::string GoNoGo;
  std::int16_t head_font = 0, HP34401_SDC = 0, HP34420_SDC = 0, HP441x_SDC = 0, hp8903 = 2, ib_dma = 0;
  PairKey ib_dmachan;
  PairKey ib_ioaddr;
  std::int16_t ib_nport = 0, ib_type = 0, ieee2_query_delay = 20, ieee_demo_prompt = 1, in_cal_req = 0,
               K2000_SDC = 0, K200x_SDC = 0, LearnTest = 0, LegacyRsltSortRemFix = 1, MathConvPrecision = 13;
  double MaxSafeDCV = 60.0, MaxSafePeakACV = 42.4;
  std::int16_t MEMCX_TolRefNom_UseMem = 0, meter_busy = 1, mfile_format = 0, MouseWheel = 1;
  std::string N5532A_504, N5532A_518, N5532A_526, N5532A_550;
  std::int16_t ni_key_search = 0, ni_visa = 0, nmeas = -1, nsd = -1, nthrow = -2;
  double oot_lim = 0.0;
  std::int16_t pass100 = 0, pd_min = 0, CTR2_SDC = 0, CTR2_SRQ_delay = 0, CTR2_V611 = 0, port = 0,
               power_on_srq0 = 1, power_on_srq1 = 1, ProcHdrDateTime = 1;
  std::string proc_date_format;
  std::int16_t prompt_font = 0;
  std::string ptitle_l, ptitle_r;
  std::int16_t pt_list_current = 1, readonly_db_write = 1, readonly_var = 1;
  double RefAccFactor = 1e-13;
  std::int16_t req_std_prompt = 1, rt_ce_level = 0, rt_demo_prompt = 1, safety = 1, self_cal = 0,
               SerialNumberCheck = 1, serial_poll_slow = 500, ShowProcSelWinColor = 1, show_req_instr = 1,
               SkipSafeSymErrChk = 0, SrqDelay = -1, SrqHoldOff = -1, SrqRetry = -1, systype = 0;
  std::string tdesc_DecimalSymbol;
  std::int16_t tdesc_LeadingSpaces = 1, TestRunLVarDisplay = 0, TestRunNRegNSD = 0, tr_search0 = 1;
  double tur_lim = -1.0;
  std::int16_t uexit_code = 0, UI_Eq_SA_LargestTol = 1, UUTPromptFirst = 1, winsys = 0, ziatech_srq_latch = 0;
  double CONF = not_configured, COV_FAC = not_configured, F = not_configured;
  std::int16_t GB_MODE = 0, GB_OVERFLOW = 0, GB_PTS = 0, GB_RESULT = 0, GB = 0, KCONF = 0, MEASURE_ONLY = 0,
               MEMC_IRPT = 1, PTF_DMM7 = -1, PTF_ACM1 = -1, PTF_DMM4 = -1, PTF_DMM5 = -1, PTF_DMM6 = -1,
               PTF_RMS1 = -1, PTF_HP34401A = -1, PTF_HP34420A = -1, PTF_HP3458A = -1, PTF_K2000 = -1,
               PTF_K2001 = -1, PTF_K2002 = -1, PTF_CTR1 = -1, REMCON = 1, RSM = 0, TOL_REF = 0, U2M = 0,
               UCONF = 0, UFMT = 0, USE_ST = -1, UUP = 1, WS = 0;
  std::string db_report1, db_report2, db_report3, db_report4, db_report5, db_report6, db_report7, db_report8,
      db_report_text1, db_report_text2, db_report_text3, db_report_text4, db_report_text5, db_report_text6,
      db_report_text7, db_report_text8;

  // Our own keys.
  std::string ib_driver = default_ib_driver;  // the IEEE-488 driver library, by name or path
  // What a driver library that tells its copyright must say; the year is not compared.
  std::string ib_copyright = "IEEE-488.2 language interface for Orvane Run Time. Copyright 1994.";
  std::int16_t late_reply_clear = 1;  // behind a time-out a device is cleared before it is written to again
  std::string com_names;          // how the system names COM1, COM2 and so on, with commas between them
  std::string rht_file;           // readings of temperature and humidity
  std::int16_t rht_max_age = 60;  // minutes; 0: a reading of any age counts
  std::int16_t delimited_results = 0;  // without a database the delimited pair is written all the same

#ifdef _WIN32
  static constexpr const char* default_ib_driver = "gpib-32.dll";
#else
  static constexpr const char* default_ib_driver = "libgpib.so.0";
#endif
};

StartupConfig& startup_config();

/// One fault of a configuration. `text` begins with the file and, where there is one, the line:
/// "orvane.ini:41: ...".
struct ConfigFault {
  int number = 0;
  bool warning = false;
  std::string text;
};

/// Sets every key to its default, then reads the file. All faults are collected, nothing is reported; a key
/// that is at fault keeps its default. False if there is a fault that is no warning.
///
/// Behind the keys come the checks of keys that belong together, of every path, and the guardband keys that the file
/// of "gb_init" gives where this one does not.
///
/// What hangs on a key but lies above this room is for the caller: set_compare_epsilon(epsfactor), and
/// run_flag2::uncertainty where tur_lim is not negative.
[[nodiscard]] bool config_load(const std::string& path, std::vector<ConfigFault>& faults);

/// Shows each fault as an error ("E505: ...") or a warning.
void config_report(const std::vector<ConfigFault>& faults);

/// The file that was read last; empty before.
const std::string& config_path();

/// One key as it is in force, in the order of the key table: the text that was typed, or the default. An
/// unset text is empty.
struct ConfigValue {
  std::string_view key;
  std::string text;
  int line = 0;      // 0 for a default
  std::string file;  // in which the line stands: config_path(), or the file of the key "gb_init"
};
std::vector<ConfigValue> config_values();

/// The family of the system that the key "winsys" names, or the one that was found: Linux counts as windows_nt.
enum class SystemFamily : std::int16_t { windows_31 = 1, windows_95, windows_nt, windows_98, windows_2000 };
SystemFamily system_family(const StartupConfig& config);

/// A file of the working folder: "rslt.tmp" and the others.
std::string work_file(std::string_view name);
/// "proc.dir" in the procedure folder.
std::string procedure_directory_file();
/// "rslt.dir" in the results folder; empty without one.
std::string result_directory_file();
/// "password.dat" in its folder.
std::string password_file();

}  // namespace orvane
