#include "evaluation/memc.h"

#include "config/startup_config.h"
#include "evaluation/tolerance.h"
#include "settings/settings.h"

namespace orvane {
namespace {

// What settling a tolerance comes to: the value of the error column, and what the tolerance is computed against.
struct Settlement {
  double reference = 0;
  std::optional<double> compute_against;
};

Settlement settle_instrument(const RunState& run, const FscRecord& record, ToleranceReference refers_to) {
  const QuantityField nominal = record.get(field::nominal);
  const bool is_mem =
      (nominal.flags & QuantityField::from_mem) != 0 || record.get(field::mod4) == mod4_code::c;
  const double value = is_mem ? run.registers.mem : nominal.value;
  switch (refers_to) {
    case ToleranceReference::system_actual: return {run.test.actual, run.test.actual};
    case ToleranceReference::uut_indicated: return {value, std::nullopt};
    case ToleranceReference::nominal: break;
  }
  return {value, value};
}

Settlement settle_memc(const RunState& run, const FscRecord& record, ToleranceReference refers_to) {
  if (const std::optional<double> number = memc_number(record)) return {*number, std::nullopt};
  switch (refers_to) {
    case ToleranceReference::system_actual: return {run.registers.mem, run.test.actual};
    case ToleranceReference::uut_indicated: return {run.registers.mem1(), std::nullopt};
    case ToleranceReference::nominal: break;
  }
  return {run.registers.mem, run.registers.mem};
}

Settlement settle_memcx(const RunState& run, const FscRecord& record, ToleranceReference refers_to) {
  const std::optional<double> number = memc_number(record);
  const bool use_mem = startup_config().MEMCX_TolRefNom_UseMem != 0;
  const double nominal = number ? *number : use_mem ? run.registers.mem : run.registers.mem1();
  switch (refers_to) {
    case ToleranceReference::system_actual: return {number ? *number : run.test.actual, run.test.actual};
    case ToleranceReference::uut_indicated: return {number ? *number : run.registers.mem1(), std::nullopt};
    case ToleranceReference::nominal: break;
  }
  return {nominal, nominal};
}

bool compute(RunState& run, const FscRecord& record, BlockField<RangeField> range,
             BlockField<ToleranceField> tolerance, double against) {
  return tolerance_from_field(run, record, record.get(tolerance), record.get(range).value, against,
                              run.test.neg_tol, run.test.pos_tol);
}

}  // namespace

ToleranceReference tolerance_reference(RunState& run) {
  switch (setting_code(run, Setting::TOL_REF)) {
    case 2: return ToleranceReference::system_actual;
    case 3: return ToleranceReference::uut_indicated;
    default: return ToleranceReference::nominal;
  }
}

std::optional<double> memc_number(const FscRecord& record) {
  double number = 0;
  if (scan_number(record.text(field::memc_nominal), number) == 0) return std::nullopt;
  return number;
}

bool memc_values(RunState& run, const FscRecord& record) {
  const double nominal = memc_number(record).value_or(run.registers.mem1());
  const bool swapped = record.code() == fsc::memcx;
  const double indicated = swapped ? run.registers.mem : nominal;
  const double actual = swapped ? nominal : run.registers.mem;
  double neg = 0, pos = 0;
  if (!tolerance_from_field(run, record, record.get(field::memc_tolerance),
                            record.get(field::memc_range).value, indicated, neg, pos))
    return false;
  run.test.pos_tol = pos;
  run.test.neg_tol = neg;
  run.test.indicated = indicated;
  run.test.actual = actual;
  return true;
}

bool settle_tolerance(RunState& run, const FscRecord& record, double& reference) {
  const std::uint16_t code = record.code();
  const bool memc = code == fsc::memc, memcx = code == fsc::memcx;
  reference = 0;
  if (!memc && !memcx && !record.has_class(code_class::instrument)) return true;
  const ToleranceReference refers_to = tolerance_reference(run);
  const Settlement settlement = memc    ? settle_memc(run, record, refers_to)
                                : memcx ? settle_memcx(run, record, refers_to)
                                        : settle_instrument(run, record, refers_to);
  reference = settlement.reference;
  if (!settlement.compute_against) return true;
  const bool columns = !memc && !memcx;
  return compute(run, record, columns ? field::range : field::memc_range,
                 columns ? field::tolerance : field::memc_tolerance, *settlement.compute_against);
}

}  // namespace orvane
