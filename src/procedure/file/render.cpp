#include "procedure/file/render.h"
namespace orvane {
std::string render_record(const FscRecord& r) { return std::string(r.text(field::text)); }
}  // namespace orvane
