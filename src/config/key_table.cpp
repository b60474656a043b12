#include "config/key_table.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "config/setting_words.h"
#include "config/value_grammar.h"

namespace orvane {
namespace {

using Config = StartupConfig;
using key_flag::library;
using key_flag::none_unsets;
using key_flag::optional;
using key_flag::path;
constexpr std::uint8_t required = 0;

constexpr std::string_view yes_no = setting_words::key_switch;

// ---- Parsers of keys that are more than a word or a number ----

bool in_range(const std::optional<int>& number, int low, int high) {
  return number && *number >= low && *number <= high;
}

// One or two parts between commas, each without blanks around it; no part if there are more.
std::vector<std::string_view> one_or_two(std::string_view value) {
  std::vector<std::string_view> parts;
  for (;;) {
    const std::size_t comma = value.find(',');
    parts.push_back(trim(value.substr(0, comma)));
    if (comma == std::string_view::npos) break;
    value.remove_prefix(comma + 1);
  }
  if (parts.size() > 2) parts.clear();
  return parts;
}

bool parse_beep(std::string_view value, Config& config) {
  if (same_word(value, "none") || same_word(value, "off")) return true;
  const std::vector<std::string_view> parts = one_or_two(value);
  if (parts.empty()) return false;
  const std::optional<int> seconds = short_number(parts[0]);
  const std::optional<int> count = parts.size() == 2 ? short_number(parts[1]) : 0;
  if (!in_range(seconds, 0, 3600) || !in_range(count, 0, 100)) return false;
  config.beep = {static_cast<std::int16_t>(*seconds), static_cast<std::int16_t>(*count)};
  return true;
}

bool parse_pair(std::string_view value, PairKey& pair, std::optional<int> (*read)(std::string_view), int low,
                int high) {
  if (same_word(value, "none")) return true;
  PairKey read_pair;
  for (const std::string_view part : one_or_two(value)) {
    const std::optional<int> number = read(part);
    if (!in_range(number, low, high)) return false;
    read_pair.value[static_cast<std::size_t>(read_pair.count++)] = static_cast<std::uint16_t>(*number);
  }
  if (read_pair.count == 0) return false;
  pair = read_pair;
  return true;
}

bool parse_ib_dmachan(std::string_view value, Config& config) {
  PairKey channels;
  if (!parse_pair(value, channels, short_number, 0, 15)) return false;
  if (channels.count == 2 && channels.value[0] == channels.value[1]) return false;
  config.ib_dmachan = channels;
  return true;
}

bool parse_ib_ioaddr(std::string_view value, Config& config) {
  return parse_pair(value, config.ib_ioaddr, hex_number, 0x100, 0xF000);
}

// "system" stays as it is: whoever prints asks the system for its symbol.
bool parse_tdesc_symbol(std::string_view value, Config& config) {
  const auto is_letter_or_digit = [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  };
  const bool symbol = value.size() == 1 && !is_letter_or_digit(value.front());
  if (!symbol && !same_word(value, "system")) return false;
  config.tdesc_DecimalSymbol = value;
  return true;
}

// ---- Rows ----

constexpr KeyRow text(std::string_view name, int flags, std::string Config::*target) {
  return {.name = name, .flags = static_cast<std::uint8_t>(flags), .grammar = {}, .text = target};
}
constexpr KeyRow real(std::string_view name, std::uint8_t flags, std::string_view grammar,
                      double Config::*target) {
  return {.name = name, .flags = flags, .grammar = grammar, .real = target};
}
constexpr KeyRow word(std::string_view name, std::uint8_t flags, std::string_view grammar,
                      std::int16_t Config::*target) {
  return {.name = name, .flags = flags, .grammar = grammar, .word = target};
}
constexpr KeyRow special(std::string_view name, std::uint8_t flags, std::string_view grammar,
                         KeyParser parser) {
  return {.name = name, .flags = flags, .grammar = grammar, .parser = parser};
}

// clang-format off
constexpr KeyRow rows[] = {
    text("accdir", required | path, &Config::accdir),
    text("bcf", required | path, &Config::bcf),
    text("cal_cert_template", optional | none_unsets | path, &Config::cal_cert_template),
    text("calhist_results", optional | none_unsets | path, &Config::calhist_results),
    text("calhist_template", optional | none_unsets | path, &Config::calhist_template),
    text("ColorFile", optional | none_unsets | path, &Config::ColorFile),
    text("config", required | path, &Config::config),
    text("correctdir", required | none_unsets | path, &Config::correctdir),
    text("error_log", optional | none_unsets | path, &Config::error_log),
    text("fail_prompt", required | none_unsets | path, &Config::fail_prompt),
    text("FreqRefAccMode", optional, &Config::FreqRefAccMode),
    text("FreqRefDevName", optional, &Config::FreqRefDevName),
    text("gb_init", optional | none_unsets | path, &Config::gb_init),
    text("gb_table", optional | none_unsets | path, &Config::gb_table),
    text("helpdir", required | path, &Config::helpdir),
    text("mfile", optional | none_unsets, &Config::mfile),
    text("pass_prompt", required | none_unsets | path, &Config::pass_prompt),
    text("password_dir", required | path, &Config::password_dir),
    text("picdir", required | path, &Config::picdir),
    text("procdir", required | path, &Config::procdir),
    text("prompt", required | none_unsets | path, &Config::prompt),
    text("RifWifDir", optional | none_unsets | path, &Config::RifWifDir),
    text("RinfBase", optional | none_unsets, &Config::RinfBase),
    text("RinfDir", optional | none_unsets | path, &Config::RinfDir),
    text("rslt_col_fl_template", optional | none_unsets | path, &Config::rslt_col_fl_template),
    text("rslt_col_template", optional | none_unsets | path, &Config::rslt_col_template),
    text("rslt_fl_template", optional | none_unsets | path, &Config::rslt_fl_template),
    text("rslt_page", optional | none_unsets | path, &Config::rslt_page),
    text("rslt_page_fl_template", optional | none_unsets | path, &Config::rslt_page_fl_template),
    text("rslt_template", optional | none_unsets | path, &Config::rslt_template),
    text("rsltdir", optional | none_unsets | path, &Config::rsltdir),
    text("trace", optional | none_unsets | path, &Config::trace),
    text("trace_template", optional | none_unsets | path, &Config::trace_template),
    text("user_cwd", optional | none_unsets | path, &Config::user_cwd),
    text("user_data_dir", optional | none_unsets | path, &Config::user_data_dir),
    text("user_prog_dir", optional | none_unsets | path, &Config::user_prog_dir),
    text("varfile", required | path, &Config::varfile),
    text("workdir", required | path, &Config::workdir),
    text("workload_data", optional | none_unsets | path, &Config::workload_data),
    text("workload_template", optional | none_unsets | path, &Config::workload_template),
    word("SRC4K_clr_sdc", optional, yes_no, &Config::SRC4K_clr_sdc),
    word("PRC1_488", optional, yes_no, &Config::PRC1_488),
    word("PRC1_488_iterm", optional, "LF:10, CR:13, EOI:64", &Config::PRC1_488_iterm),
    real("PRC1_PressureTimeout", optional, "10.0-600.0", &Config::PRC1_PressureTimeout),
    word("MFC3LFC", optional, yes_no, &Config::MFC3LFC),
    real("8901B_DAVL_Timeout", optional, "60.0-1000.0", &Config::DAVL_8901B_Timeout),
    text("MSC1_mfg", optional, &Config::MSC1_mfg),
    word("MSC1_ShowNearCalDue", optional, yes_no, &Config::MSC1_ShowNearCalDue),
    word("MSC1_ShowPastCalDue", optional, yes_no, &Config::MSC1_ShowPastCalDue),
    text("OSC3_mfg", optional, &Config::OSC3_mfg),
    word("OSC3_ShowNearCalDue", optional, yes_no, &Config::OSC3_ShowNearCalDue),
    word("OSC3_ShowPastCalDue", optional, yes_no, &Config::OSC3_ShowPastCalDue),
    word("accf_acc_rel", optional, yes_no, &Config::accf_acc_rel),
    word("acc_check", optional, yes_no, &Config::acc_check),
    word("acc_conflict", optional, "Error:0, Shortest:1, Longest:2", &Config::acc_conflict),
    real("acc_overlap", optional, "0.0-100.0", &Config::acc_overlap),
    real("acc_range_overlap", optional, "0.0-100.0", &Config::acc_range_overlap),
    real("AdjustmentThreshold", optional, "0.0-1000.0", &Config::AdjustmentThreshold),
    word("AgilentN5530S", optional, yes_no, &Config::AgilentN5530S),
    word("ask_c_default", optional, "+:1, YES:1, -:0, NO:0", &Config::ask_c_default),
    word("ask_x_default", optional, "+:1, YES:1, -:0, NO:0", &Config::ask_x_default),
    word("ask_z_default", optional, "+:1, YES:1, -:0, NO:0", &Config::ask_z_default),
    word("auto_author", optional, yes_no, &Config::auto_author),
    special("beep", required, "seconds 0-3600 and, behind a comma, a count 0-100; none, off", parse_beep),
    word("BraceEmpty", optional, yes_no, &Config::BraceEmpty),
    word("BraceEval", optional, yes_no, &Config::BraceEval),
    word("CalResults", optional, yes_no, &Config::CalResults),
    word("CaretWidth", optional, "0-300", &Config::CaretWidth),
    word("ce_no_check_com", optional, yes_no, &Config::ce_no_check_com),
    word("ColorMode", optional, yes_no, &Config::ColorMode),
    word("ConnDisconn", optional, yes_no, &Config::ConnDisconn),
    word("cor_exact", optional, yes_no, &Config::cor_exact),
    word("OSC3_TriggerCable1", optional, yes_no, &Config::OSC3_TriggerCable1),
    word("OSC3_TriggerCable2", optional, yes_no, &Config::OSC3_TriggerCable2),
    word("OSC3_TriggerCable3", optional, yes_no, &Config::OSC3_TriggerCable3),
    word("OSC3_TriggerCable4", optional, yes_no, &Config::OSC3_TriggerCable4),
    word("OSC3_TriggerCable5", optional, yes_no, &Config::OSC3_TriggerCable5),
    word("database", optional, "YES:1, VelaPuppis:0", &Config::database),
    text("data_source_name", optional, &Config::data_source_name),
    word("db_proc", optional, yes_no, &Config::db_proc),
    word("dos_sc_eval", optional, yes_no, &Config::dos_sc_eval),
    word("dtr_disable", optional, yes_no, &Config::dtr_disable),
    word("due_date_in_cal", required, yes_no, &Config::due_date_in_cal),
    real("epsfactor", optional, "0.0000000000000001-0.00001", &Config::epsfactor),
    word("export_results", optional, yes_no, &Config::export_results),
    word("ExtendedUnits", optional, yes_no, &Config::ExtendedUnits),
    word("forcecase", optional, "1:1, 0:0", &Config::forcecase),
    real("gbf", optional, "0.0-1000.0", &Config::gbf),
    text("GoNoGo", optional, &Config::GoNoGo),
    word("head_font", optional, "SYSTEM:1, DISPLAY:2", &Config::head_font),
    word("HP34401_SDC", optional, yes_no, &Config::HP34401_SDC),
    word("HP34420_SDC", optional, yes_no, &Config::HP34420_SDC),
    word("HP441x_SDC", optional, yes_no, &Config::HP441x_SDC),
    word("hp8903", optional, "A:1, B:2, E:3", &Config::hp8903),
    word("ib_dma", optional, yes_no, &Config::ib_dma),
    special("ib_dmachan", required, "one or two different channels 0-15; none", parse_ib_dmachan),
    special("ib_ioaddr", required, "one or two hexadecimal addresses 100-F000; none", parse_ib_ioaddr),
    word("ib_nport", required, "0-2", &Config::ib_nport),
    word("ib_type", required, "NONE:0, PC2B(T):10, PC2A:11, PCMCIA-GPIB:12, AT-GPIB/TNT:13, AT-GPIB/TNT(PNP):14, PCI-GPIB:15, GPIB-USB-A:16", &Config::ib_type),
    word("ieee2_query_delay", optional, "0-32767", &Config::ieee2_query_delay),
    word("ieee_demo_prompt", optional, yes_no, &Config::ieee_demo_prompt),
    word("in_cal_req", optional, yes_no, &Config::in_cal_req),
    word("K2000_SDC", optional, yes_no, &Config::K2000_SDC),
    word("K200x_SDC", optional, yes_no, &Config::K200x_SDC),
    word("LearnTest", optional, yes_no, &Config::LearnTest),
    word("LegacyRsltSortRemFix", optional, yes_no, &Config::LegacyRsltSortRemFix),
    word("MathConvPrecision", optional, "4-15", &Config::MathConvPrecision),
    real("MaxSafeDCV", optional, "10.0-60.0", &Config::MaxSafeDCV),
    real("MaxSafePeakACV", optional, "10.0-42.4", &Config::MaxSafePeakACV),
    word("MEMCX_TolRefNom_UseMem", optional, yes_no, &Config::MEMCX_TolRefNom_UseMem),
    word("meter_busy", optional, yes_no, &Config::meter_busy),
    word("mfile_format", optional, "DELIM:1, DELIM-Q:2, DELIM-S:3, VERBOSE:4", &Config::mfile_format),
    word("MouseWheel", optional, yes_no, &Config::MouseWheel),
    text("N5532A-504", optional, &Config::N5532A_504),
    text("N5532A-518", optional, &Config::N5532A_518),
    text("N5532A-526", optional, &Config::N5532A_526),
    text("N5532A-550", optional, &Config::N5532A_550),
    word("ni_key_search", optional, yes_no, &Config::ni_key_search),
    word("ni-visa", optional, yes_no, &Config::ni_visa),
    word("nmeas", optional, "0-1000", &Config::nmeas),
    word("nsd", optional, "2-14", &Config::nsd),
    word("nthrow", optional, "-1-100", &Config::nthrow),
    real("oot_lim", required, "99.9-500", &Config::oot_lim),
    word("pass100", required, yes_no, &Config::pass100),
    word("pd_min", optional, yes_no, &Config::pd_min),
    word("CTR2_SDC", optional, yes_no, &Config::CTR2_SDC),
    word("CTR2_SRQ_delay", optional, "0-5000", &Config::CTR2_SRQ_delay),
    word("CTR2_V611", optional, yes_no, &Config::CTR2_V611),
    word("port", required, "NONE:0, COM1:1, COM2:2, COM3:3, COM4:4, COM5:5, COM6:6, COM7:7, COM8:8, COM9:9, COM10:10, COM11:11, COM12:12, COM13:13, COM14:14, COM15:15, COM16:16, COMMFC1:17, COMMFC2:18, COMOSC1:19, COMOSC2:20", &Config::port),
    word("power_on_srq0", optional, "ERROR:0, PROMPT:1, CLEAR:2", &Config::power_on_srq0),
    word("power_on_srq1", optional, "ERROR:0, PROMPT:1, CLEAR:2", &Config::power_on_srq1),
    word("ProcHdrDateTime", optional, yes_no, &Config::ProcHdrDateTime),
    text("proc_date_format", optional, &Config::proc_date_format),
    word("prompt_font", optional, "SYSTEM:1, PROMPT:2, DISPLAY:3", &Config::prompt_font),
    text("ptitle_l", required, &Config::ptitle_l),
    text("ptitle_r", required, &Config::ptitle_r),
    word("pt_list_current", optional, yes_no, &Config::pt_list_current),
    word("readonly_db_write", optional, yes_no, &Config::readonly_db_write),
    word("readonly_var", optional, yes_no, &Config::readonly_var),
    real("RefAccFactor", optional, "1E-20-1E-6", &Config::RefAccFactor),
    word("req_std_prompt", optional, yes_no, &Config::req_std_prompt),
    word("rt_ce_level", optional, "0-5", &Config::rt_ce_level),
    word("rt_demo_prompt", optional, yes_no, &Config::rt_demo_prompt),
    word("safety", optional, "DEMO:2, ON:1, OFF:0", &Config::safety),
    word("self_cal", optional, "YES:2, WARN:1, NO:0", &Config::self_cal),
    word("SerialNumberCheck", optional, "WARN:2, 2:2, YES:1, 1:1, NO:0, 0:0", &Config::SerialNumberCheck),
    word("serial_poll_slow", optional, "0-1000", &Config::serial_poll_slow),
    word("ShowProcSelWinColor", optional, yes_no, &Config::ShowProcSelWinColor),
    word("show_req_instr", optional, "2:2, YES:1, 1:1, NO:0, 0:0", &Config::show_req_instr),
    word("SkipSafeSymErrChk", optional, yes_no, &Config::SkipSafeSymErrChk),
    word("SrqDelay", optional, "0-1000", &Config::SrqDelay),
    word("SrqHoldOff", optional, "0-1000", &Config::SrqHoldOff),
    word("SrqRetry", optional, "0-100", &Config::SrqRetry),
    word("systype", required, "METER:1, OSCILLOSCOPE:2", &Config::systype),
    special("tdesc_DecimalSymbol", optional, "one character that is no letter or digit; system", parse_tdesc_symbol),
    word("tdesc_LeadingSpaces", optional, yes_no, &Config::tdesc_LeadingSpaces),
    word("TestRunLVarDisplay", optional, "Level:1, Tab:2, Left:3", &Config::TestRunLVarDisplay),
    word("TestRunNRegNSD", optional, "4-15", &Config::TestRunNRegNSD),
    word("tr_search0", optional, yes_no, &Config::tr_search0),
    real("tur_lim", required, "0-10, NONE:-1", &Config::tur_lim),
    word("uexit_code", optional, yes_no, &Config::uexit_code),
    word("UI_Eq_SA_LargestTol", optional, yes_no, &Config::UI_Eq_SA_LargestTol),
    word("UUTPromptFirst", optional, yes_no, &Config::UUTPromptFirst),
    word("winsys", optional, "WIN31:1, WIN95:2, WINNT:3, WIN98:4, WIN2000:5", &Config::winsys),
    word("ziatech_srq_latch", optional, yes_no, &Config::ziatech_srq_latch),
    real("CONF", optional, "0.0-4.0", &Config::CONF),
    real("COV_FAC", optional, "0.0-4.0", &Config::COV_FAC),
    real("F", optional, "0.0-4.0", &Config::F),
    word("GB_MODE", optional, setting_words::gb_mode, &Config::GB_MODE),
    word("GB_OVERFLOW", optional, setting_words::gb_overflow, &Config::GB_OVERFLOW),
    word("GB_PTS", optional, setting_words::gb_pts, &Config::GB_PTS),
    word("GB_RESULT", optional, setting_words::gb_result, &Config::GB_RESULT),
    word("GB", optional, setting_words::gb, &Config::GB),
    word("KCONF", optional, setting_words::confidence, &Config::KCONF),
    word("MEASURE_ONLY", optional, yes_no, &Config::MEASURE_ONLY),
    word("MEMC_IRPT", optional, yes_no, &Config::MEMC_IRPT),
    word("PTF_DMM7", optional, yes_no, &Config::PTF_DMM7),
    word("PTF_ACM1", optional, yes_no, &Config::PTF_ACM1),
    word("PTF_DMM4", optional, yes_no, &Config::PTF_DMM4),
    word("PTF_DMM5", optional, yes_no, &Config::PTF_DMM5),
    word("PTF_DMM6", optional, yes_no, &Config::PTF_DMM6),
    word("PTF_RMS1", optional, yes_no, &Config::PTF_RMS1),
    word("PTF_HP34401A", optional, yes_no, &Config::PTF_HP34401A),
    word("PTF_HP34420A", optional, yes_no, &Config::PTF_HP34420A),
    word("PTF_HP3458A", optional, yes_no, &Config::PTF_HP3458A),
    word("PTF_K2000", optional, yes_no, &Config::PTF_K2000),
    word("PTF_K2001", optional, yes_no, &Config::PTF_K2001),
    word("PTF_K2002", optional, yes_no, &Config::PTF_K2002),
    word("PTF_CTR1", optional, yes_no, &Config::PTF_CTR1),
    word("REMCON", optional, yes_no, &Config::REMCON),
    word("RSM", optional, setting_words::rsm, &Config::RSM),
    word("TOL_REF", optional, setting_words::tol_ref, &Config::TOL_REF),
    word("U2M", optional, setting_words::u2m, &Config::U2M),
    word("UCONF", optional, setting_words::confidence, &Config::UCONF),
    word("UFMT", optional, setting_words::ufmt, &Config::UFMT),
    word("USE_ST", optional, yes_no, &Config::USE_ST),
    word("UUP", optional, yes_no, &Config::UUP),
    word("WS", optional, yes_no, &Config::WS),
    text("db_report1", optional, &Config::db_report1),
    text("db_report2", optional, &Config::db_report2),
    text("db_report3", optional, &Config::db_report3),
    text("db_report4", optional, &Config::db_report4),
    text("db_report5", optional, &Config::db_report5),
    text("db_report6", optional, &Config::db_report6),
    text("db_report7", optional, &Config::db_report7),
    text("db_report8", optional, &Config::db_report8),
    text("db_report_text1", optional, &Config::db_report_text1),
    text("db_report_text2", optional, &Config::db_report_text2),
    text("db_report_text3", optional, &Config::db_report_text3),
    text("db_report_text4", optional, &Config::db_report_text4),
    text("db_report_text5", optional, &Config::db_report_text5),
    text("db_report_text6", optional, &Config::db_report_text6),
    text("db_report_text7", optional, &Config::db_report_text7),
    text("db_report_text8", optional, &Config::db_report_text8),

    text("rht_file", optional | path | none_unsets, &Config::rht_file),
    word("rht_max_age", optional, "0-32767", &Config::rht_max_age),
    text("ib_driver", optional | library, &Config::ib_driver),
    text("com_names", optional, &Config::com_names),
    text("ib_copyright", optional, &Config::ib_copyright),
    word("delimited_results", optional, yes_no, &Config::delimited_results),
    word("late_reply_clear", optional, yes_no, &Config::late_reply_clear),
};
// clang-format on

}  // namespace

std::span<const KeyRow> config_keys() { return rows; }

int find_config_key(std::string_view name) {
  const auto row = std::find_if(std::begin(rows), std::end(rows),
                                [&](const KeyRow& one) { return same_word(one.name, name); });
  return row != std::end(rows) ? static_cast<int>(row - std::begin(rows)) : -1;
}

}  // namespace orvane
