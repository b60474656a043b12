#include "calibrator.h"

namespace gpibsim {
namespace {

constexpr std::string_view send_word = "UUT_SEND ";
constexpr int bytes_waiting = 0x100;       // of ISR?
constexpr std::size_t reply_limit = 1000;  // bytes of one UUT_RECV?
constexpr std::size_t pending_limit = 65536;

// The size of a definite-length block with its head ("#212"), 0 while the head is not whole.
std::size_t block_size(std::string_view block) {
  if (block.size() < 2 || block[0] != '#' || block[1] < '1' || block[1] > '9') return 0;
  const auto digits = static_cast<std::size_t>(block[1] - '0');
  if (block.size() < 2 + digits) return 0;
  double length = 0;
  if (!number_at(block.substr(2, digits), length)) return 0;
  return 2 + digits + static_cast<std::size_t>(length);
}

}  // namespace

Calibrator::Calibrator(std::uint64_t seed, const std::string& model, ScpiInstrument uut)
    : ScpiInstrument(seed, "ORVANE,0," + model + ",2.6", {}), uut_(std::move(uut)) {}

void Calibrator::take(std::string_view bytes, bool end) {
  pending_ += bytes;
  if (pending_.size() > pending_limit) pending_.clear();
  if (pending_.starts_with(send_word)) {
    const std::size_t whole = block_size(std::string_view(pending_).substr(send_word.size()));
    if (!end && (whole == 0 || pending_.size() < send_word.size() + whole)) return;
    receive(pending_);
    pending_.clear();
    return;
  }
  if (!end && !pending_.ends_with('\n')) return;
  const std::string text = std::move(pending_);
  pending_.clear();
  ScpiInstrument::take(text, end);
}

void Calibrator::message(std::string_view text) {
  if (text.starts_with(send_word)) {
    if (!send_block(text.substr(send_word.size()))) error(command_error, -161, "Invalid block data");
    return;
  }
  ScpiInstrument::message(text);
}

bool Calibrator::send_block(std::string_view block) {
  const std::size_t size = block_size(block);
  if (size == 0 || block.size() < size) return false;
  const std::size_t head = 2 + static_cast<std::size_t>(block[1] - '0');
  to_uut(block.substr(head, size - head));
  return true;
}

bool Calibrator::send_bytes(std::string_view list) {
  std::string bytes;
  while (!list.empty()) {
    const std::size_t comma = list.find(',');
    double value = 0;
    if (!number_at(list.substr(0, comma), value) || value < 0 || value > 255) return false;
    bytes += static_cast<char>(static_cast<unsigned char>(value));
    list = comma == std::string_view::npos ? std::string_view() : list.substr(comma + 1);
  }
  to_uut(bytes);
  return !bytes.empty();
}

// A line ends with CR as well as with LF.
void Calibrator::to_uut(std::string_view bytes) {
  std::string lines(bytes);
  for (char& c : lines) {
    if (c == '\r') c = '\n';
  }
  uut_.take(lines, false);
  from_uut();
}

void Calibrator::from_uut() {
  bool ended = false;
  while (uut_.has_answer()) received_ += uut_.give(reply_limit, ended);
}

bool Calibrator::own(std::string_view header, std::string_view argument, bool query) {
  if (query && header == "ISR") {
    answer(std::to_string(received_.empty() ? 0 : bytes_waiting));
  } else if (query && header == "UUT_RECV") {
    const std::string part = received_.substr(0, reply_limit);
    received_.erase(0, part.size());
    const std::string length = std::to_string(part.size());
    answer("#" + std::to_string(length.size()) + length + part);
  } else if (header == "UUT_FLUSH") {
    received_.clear();
  } else if (header == "UUT_SENDB") {
    if (!send_bytes(argument)) error(command_error, -104, "Data type error");
  } else {
    return header == "UUT_SET" || header == "SP_SET";
  }
  return true;
}

}  // namespace gpibsim
