// SCPI multimeters: HP 34401A and 34420A, Keithley 2000, 2001 and 2002. One body; a model is a row of its functions
// with their highest ranges.
#pragma once

#include <map>
#include <span>
#include <string>

#include "meter_input.h"
#include "scpi_instrument.h"

namespace gpibsim {

struct MeterModel {
  const char* name;      // in the bench file
  const char* identity;  // of "*IDN?", the serial number follows
  const char* firmware;
  int digits;         // behind the point of a reading
  double over_range;  // full scale by range
  struct Function {
    const char* parameter;  // of FUNCtion and CONFigure: "VOLTage[:DC]"
    const char* word;       // of the bench file
    double highest;         // range
  };
  std::span<const Function> functions;
};
/// Null if there is no such model.
const MeterModel* meter_model(std::string_view name);

class ScpiMeter : public ScpiInstrument {
 public:
  ScpiMeter(const MeterModel& model, std::uint64_t seed, std::string serial,
            std::map<std::string, MeterFunction> functions);
  void trigger() override { begin(); }
  void wire(const Instrument* source, bool loaded) override { input_.wire(source, loaded); }

 protected:
  bool own(std::string_view header, std::string_view argument, bool query) override;
  void preset() override;

 private:
  const MeterModel::Function* function_at(std::string_view parameter) const;
  bool configure(const MeterModel::Function* function, std::string_view argument);
  bool function_setting(std::string_view header, std::string_view argument, bool query);
  void select(std::string_view argument, bool query);
  void begin();
  void fetch();
  double range() const;

  const MeterModel& model_;
  MeterInput input_;
  const MeterModel::Function* function_ = nullptr;
  double expected_ = 0;
  bool automatic_range_ = true;
  bool continuous_ = false;
  bool has_reading_ = false;
  double reading_ = 0;
};

}  // namespace gpibsim
