// Instruments of IEEE 488.2 with a SCPI command tree: status registers, service request and an error queue. By itself a
// generic instrument with numeric settings from the bench file; models add the commands of their own.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "instrument.h"

namespace gpibsim {

/// One node of the command tree, "SOURce:VOLTage": settable within its limits, and readable with "?". A node that is
/// read only gives its value with noise.
struct ScpiSetting {
  std::string path;  // as written: capitals are the short form
  double value = 0;
  double low = 0;
  double high = 0;
  bool read_only = false;
  double noise = 0;  // relative to the value
};

/// Does a header as it was sent ("VOLT:RANG") name this node of the tree ("[SENSe:]VOLTage[:DC]:RANGe[:UPPer]")? Words
/// count in their short form, their capitals, or whole; what stands in brackets may be left out.
bool header_matches(std::string_view given, std::string_view node);

class ScpiInstrument : public Instrument {
 public:
  ScpiInstrument(std::uint64_t seed, std::string identity, std::vector<ScpiSetting> settings);
  std::string state() const override;
  bool is_live() const override;
  std::optional<Signal> output() const override;

 protected:
  /// A command of the model: `header` whole, in capitals, without a leading colon and without its "?". False if it is
  /// none; what is wrong with one goes to error().
  virtual bool own(std::string_view /*header*/, std::string_view /*argument*/, bool /*query*/) {
    return false;
  }
  virtual void preset() { settings_ = start_; }
  void answer(const std::string& text);
  void error(int event, int number, const char* text);
  /// An argument that is a number of these limits, else an error.
  bool take_number(std::string_view argument, double low, double high, double& value);

  // Event status register of IEEE 488.2.
  static constexpr int operation_complete = 0x01, query_error = 0x04, device_error = 0x08,
                       execution_error = 0x10, command_error = 0x20, power_on = 0x80;

  void message(std::string_view text) override;
  std::uint8_t status_byte() override;
  void polled() override { service_given_ = true; }
  void nothing_to_say() override;

 private:
  void unit(std::string_view text);
  void common(const std::string& header, std::string_view argument);
  void tree(std::string header, std::string_view argument, bool query);
  int summary() const;
  ScpiSetting* find(std::string_view header);
  const ScpiSetting* setting_at(std::string_view node) const;

  Noise noise_;
  std::string identity_;
  std::vector<ScpiSetting> settings_;
  std::vector<ScpiSetting> start_;
  std::deque<std::string> errors_;
  std::string path_;      // of the message unit before, for relative headers
  std::string response_;  // of the message in hand
  int event_status_ = power_on;
  int event_enable_ = 0;
  int service_enable_ = 0;
  int requested_ = 0;  // the summary bits for which service was asked
  bool service_given_ = false;
};

}  // namespace gpibsim
