#include "procedure/file/statement_form.h"

#include <array>

#include "state/fsc.h"

namespace orvane {
namespace {

using Form = StatementForm;

struct FormRow {
  std::uint16_t code;
  Form form;
  TextField text{};
};

// Every statement that is neither in the standard layout nor an instrument's modifier.
constexpr FormRow rows[] = {
    {fsc::disp, Form::text, field::text},
    {fsc::head, Form::text, field::text},
    {fsc::ieee, Form::text, field::text},
    {fsc::memi, Form::text, field::text},
    {fsc::mem2, Form::text, field::text},
    {fsc::mess, Form::text, field::text},
    {fsc::opbr, Form::text, field::text},
    {fsc::pic, Form::text, field::text},
    {fsc::port, Form::text, field::text},
    {fsc::rslt, Form::text, field::text},
    {fsc::set, Form::text, field::text},
    {fsc::dos, Form::text, field::text},
    {fsc::math, Form::text, field::text},
    {fsc::std, Form::text, field::text},
    {fsc::reset, Form::text, field::text},
    {fsc::ieee2, Form::text, field::text},
    {fsc::scpi, Form::text, field::text},
    {fsc::wait, Form::text, field::text},
    {fsc::visa, Form::text, field::text},
    {fsc::dose, Form::text, field::text},
    {fsc::pice, Form::text, field::text},
    {fsc::endif, Form::text, field::text},
    {fsc::do_, Form::text, field::text},
    {fsc::call, Form::text, field::text},
    {fsc::tol, Form::text, field::text_14},
    {fsc::fmt, Form::text, field::text_14},
    {fsc::vset, Form::text, field::text_14},
    {fsc::tset, Form::text, field::text_14},
    {fsc::cmp, Form::text, field::text_14},
    {fsc::label, Form::text, field::text_14},
    {fsc::if_, Form::text, field::block_text},
    {fsc::else_, Form::text, field::block_text},
    {fsc::elseif, Form::text, field::block_text},
    {fsc::while_, Form::text, field::block_text},
    {fsc::endw, Form::text, field::block_text},
    {fsc::until, Form::text, field::block_text},
    {fsc::jmpl, Form::text, field::jmpl_text},
    {fsc::pqc1, Form::text, field::parameter_text},
    {fsc::rfc1, Form::text, field::parameter_text},
    {fsc::n5530, Form::text, field::parameter_text},
    {fsc::n5531, Form::text, field::parameter_text},
    {fsc::fsmr, Form::text, field::parameter_text},
    {fsc::psa, Form::text, field::parameter_text},
    {fsc::est1, Form::text, field::parameter_text},
    {fsc::eval, Form::eval, field::text},
    {fsc::jmp, Form::jump},
    {fsc::rpt, Form::jump},
    {fsc::jmpt, Form::jump_name, field::jmp_text},
    {fsc::jmpf, Form::jump_name, field::jmp_text},
    {fsc::jmpz, Form::jump_zero, field::jmp_text},
    {fsc::mem_plus, Form::arithmetic},
    {fsc::mem_minus, Form::arithmetic},
    {fsc::mem_times, Form::arithmetic},
    {fsc::mem_divide, Form::arithmetic},
    {fsc::meme, Form::exchange},
    {fsc::ask_plus, Form::ask},
    {fsc::ask_minus, Form::ask},
    {fsc::con, Form::con},
    {fsc::draw, Form::draw},
    {fsc::rng, Form::rng},
    {fsc::acc, Form::acc},
    {fsc::memc, Form::memc},
    {fsc::memcx, Form::memc},
    {fsc::accf, Form::accf},
    {fsc::target, Form::target},
    {fsc::end, Form::none},
};

constexpr std::uint16_t class_mask = 0xFF00;
constexpr std::uint16_t standard_class = code_class::executable | code_class::instrument | code_class::test;

constexpr auto by_ordinal = [] {
  std::array<const FormRow*, 256> table{};
  for (const FormRow& row : rows) table[static_cast<std::size_t>(fsc_ordinal(row.code))] = &row;
  return table;
}();

const FormRow* row_of(std::uint16_t code) {
  const FormRow* row = by_ordinal[static_cast<std::size_t>(fsc_ordinal(code))];
  return row != nullptr && row->code == code ? row : nullptr;
}

}  // namespace

StatementForm statement_form(std::uint16_t code) {
  if ((code & class_mask) == standard_class) return Form::standard;
  if (const FormRow* row = row_of(code)) return row->form;
  return fsc_row(code) != nullptr ? Form::modifier : Form::none;
}

TextField statement_text_field(std::uint16_t code) {
  const FormRow* row = row_of(code);
  return row != nullptr && row->text.size != 0 ? row->text : field::text;
}

}  // namespace orvane
