// A multifunction calibrator as the host of a serial unit under test: the part of its remote language that carries
// bytes to the port on its back and from there. Behind the port stands a SCPI instrument.
//
//   UUT_SET 9600,NOSTALL,DBIT8,SBIT1,PNONE    UUT_SEND #15hello    UUT_SENDB 65,13
//   ISR? (bit 0x100: bytes have come)         UUT_RECV? -> #15hello UUT_FLUSH
#pragma once

#include "scpi_instrument.h"

namespace gpibsim {

class Calibrator : public ScpiInstrument {
 public:
  /// The third field of its identity is its model, the fourth the firmware's version.
  Calibrator(std::uint64_t seed, const std::string& model, ScpiInstrument uut);
  /// A block of UUT_SEND may hold line ends.
  void take(std::string_view bytes, bool end) override;

 protected:
  void message(std::string_view text) override;
  bool own(std::string_view header, std::string_view argument, bool query) override;

 private:
  bool send_block(std::string_view block);
  bool send_bytes(std::string_view list);
  void to_uut(std::string_view bytes);
  void from_uut();

  ScpiInstrument uut_;
  std::string pending_;
  std::string received_;
};

}  // namespace gpibsim
