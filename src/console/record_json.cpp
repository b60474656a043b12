#include "console/record_json.h"

#include "messages/encoding.h"
#include "procedure/file/field_codes.h"
#include "procedure/file/render.h"
#include "procedure/file/statement_form.h"
#include "state/fsc.h"

namespace orvane {
namespace {

using Json = nlohmann::ordered_json;

std::string text_of(const FscRecord& record, TextField field) { return utf8_from_cp1252(record.text(field)); }

Json range_json(const RangeField& range) {
  return {{"flags", range.flags}, {"digits", range.digits}, {"value", range.value}};
}

template <class Quantity>
Json quantity_json(const Quantity& quantity) {
  return {{"unit", quantity.unit},
          {"prefix", quantity.prefix},
          {"flags", quantity.flags},
          {"digits", quantity.digits},
          {"value", quantity.value}};
}

Json tolerance_json(const ToleranceField& tolerance) {
  Json terms = Json::array();
  for (std::size_t i = 0; i < std::min<std::size_t>(tolerance.count, tolerance.terms.size()); ++i) {
    const ToleranceTerm& term = tolerance.terms[i];
    terms.push_back({{"kind", term.kind}, {"digits_or_index", term.digits_or_index}, {"value", term.value}});
  }
  return {{"count", tolerance.count}, {"flags", tolerance.flags}, {"terms", std::move(terms)}};
}

// --- Payloads, in the order of StatementForm -----------------------------------------------------------------

void add_text(Json& json, const FscRecord& record) {
  const std::uint16_t code = record.get(field::code);
  if ((code & code_class::branching) != 0) json["target_index"] = record.get(branch_index_field(code));
  json["text"] = text_of(record, statement_text_field(code));
}

void add_target_test(Json& json, const FscRecord& record) {
  json["target_major"] = record.get(field::jmp_target_major);
  json["target_minor"] = record.get(field::jmp_target_minor);
  json["target_index"] = record.get(field::jmp_target_index);
}

void add_jump(Json& json, const FscRecord& record) {
  add_target_test(json, record);
  json["condition"] = record.get(field::jmp_condition);
}

void add_conditional_jump(Json& json, const FscRecord& record) {
  add_target_test(json, record);
  json["text"] = text_of(record, field::jmp_text);
  json["tolerance"] = record.get(field::jmp_tolerance);
}

void add_arithmetic(Json& json, const FscRecord& record) {
  json["present"] = record.get(field::mem_present);
  json["operand"] = record.get(field::mem_operand);
}

void add_exchange(Json& json, const FscRecord& record) {
  add_arithmetic(json, record);
  json["register"] = record.get(field::meme_register);
  json["operation"] = record.get(field::meme_operation);
}

void add_ask(Json& json, const FscRecord& record) {
  const std::uint32_t options = record.get(field::ask_options);
  std::string letters;
  for (const AskLetter& letter : ask_letters()) {
    if ((options & letter.bit) != 0) letters += letter.letter;
  }
  json["options"] = options;
  json["letters"] = letters;
}

void add_con(Json& json, const FscRecord& record) {
  Json switches = Json::array();
  for (int number = 1; number <= con_switch_limit; ++number) {
    if (con_switch(record, number)) switches.push_back(number);
  }
  json["flags"] = record.get(field::con_flags);
  if ((record.get(field::con_flags) & con_flag::number) != 0)
    json["number"] = record.get(field::con_number);
  else
    json["switches"] = std::move(switches);
}

void add_draw(Json& json, const FscRecord& record) {
  json["x"] = record.get(field::draw_x) - draw_offset;
  json["y"] = record.get(field::draw_y);
  json["width"] = record.get(field::draw_width) - draw_offset;
  json["height"] = record.get(field::draw_height);
  json["style"] = {record.get(field::draw_style_1), record.get(field::draw_style_2),
                   record.get(field::draw_style_3), record.get(field::draw_style_4)};
}

void add_rng(Json& json, const FscRecord& record) {
  json["unit"] = record.get(field::rng_unit);
  json["prefix"] = record.get(field::rng_prefix);
  json["flags"] = record.get(field::rng_flags);
  json["value"] = record.get(field::rng_value);
}

void add_acc(Json& json, const FscRecord& record) {
  json["range"] = range_json(record.get(field::memc_range));
  json["nominal"] = text_of(record, field::memc_nominal);
  json["tolerance"] = tolerance_json(record.get(field::memc_tolerance));
}

void add_memc(Json& json, const FscRecord& record) {
  add_acc(json, record);
  json["modifier"] = text_of(record, field::memc_modifier);
}

void add_accf(Json& json, const FscRecord& record) {
  json["ordinal"] = record.get(field::accf_ordinal);
  json["file"] = text_of(record, field::accf_name);
}

void add_target(Json& json, const FscRecord& record) { json["options"] = record.get(field::target_options); }

void add_standard(Json& json, const FscRecord& record) {
  json["range"] = range_json(record.get(field::range));
  json["nominal"] = quantity_json(record.get(field::nominal));
  json["tolerance"] = tolerance_json(record.get(field::tolerance));
  json["mod1"] = quantity_json(record.get(field::mod1));
  json["mod2"] = {{"code", record.get(field::mod2_code)}, {"value", record.get(field::mod2_value)}};
  json["mod3"] = record.get(field::mod3);
  json["mod4"] = record.get(field::mod4);
  json["con"] = record.get(field::con);
}

// Settings of an instrument, and what has no form: the bytes as they are.
void add_bytes(Json& json, const FscRecord& record) {
  constexpr char digits[] = "0123456789abcdef";
  std::string bytes;
  for (std::size_t i = FscRecord::payload_offset; i < record.bytes.size(); ++i) {
    bytes += digits[record.bytes[i] >> 4];
    bytes += digits[record.bytes[i] & 0x0F];
  }
  json["payload"] = bytes;
}

void add_none(Json& json, const FscRecord& record) {
  if (record.get(field::code) != fsc::end) add_bytes(json, record);
}

constexpr void (*form_fields[])(Json&, const FscRecord&) = {add_none,
                                                            add_text,
                                                            add_text,
                                                            add_jump,
                                                            add_conditional_jump,
                                                            add_conditional_jump,
                                                            add_arithmetic,
                                                            add_exchange,
                                                            add_ask,
                                                            add_con,
                                                            add_draw,
                                                            add_rng,
                                                            add_acc,
                                                            add_memc,
                                                            add_accf,
                                                            add_target,
                                                            add_standard,
                                                            add_bytes};
static_assert(std::size(form_fields) == static_cast<std::size_t>(StatementForm::count));

void add_payload(Json& json, const FscRecord& record) {
  const std::uint16_t code = record.get(field::code);
  const bool columns = (record.get(field::line_flags) & line_flag::columns) != 0;
  if (code == 0 || (code & code_class::listing) != 0 || !columns)
    json["text"] = text_of(record, field::text);
  else if ((code & code_class::executable) != 0)
    form_fields[static_cast<std::size_t>(statement_form(code))](json, record);
  else if (code == header_code::adjustment_threshold)
    json["threshold"] = record.get(field::adjustment_threshold);
  else
    json["text"] = text_of(record, field::text);
}

}  // namespace

Json record_json(const FscRecord& record) {
  const std::uint16_t code = record.get(field::code);
  const bool statement = (code & code_class::executable) != 0;
  Json json;
  json["code"] = code;
  json["fsc"] = statement ? fsc_name(fsc_ordinal(code)) : std::string_view();
  json["test_major"] = record.get(field::test_major);
  json["test_minor"] = record.get(field::test_minor);
  json["line_flags"] = record.get(field::line_flags);
  json["source_line"] = record.get(field::source_line);
  json["listing_before"] = record.get(field::listing_before);
  if (const std::string_view keyword = header_keyword(code); !keyword.empty()) json["keyword"] = keyword;
  add_payload(json, record);
  return json;
}

}  // namespace orvane
