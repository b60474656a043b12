#include "desktop/placement.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <charconv>
#include <limits>

#include "config/user_settings.h"

namespace orvane {
namespace {

constexpr int value_limit = 100000;
constexpr int grasp_width = 80, grasp_height = 24;  // of a window's head that must be seen

int squared_distance(const QPoint& one, const QPoint& other) {
  const QPoint way = (one - other) / 4;
  return QPoint::dotProduct(way, way);
}

}  // namespace

std::optional<int> placement_value(std::string_view section, std::string_view key) {
  const auto text = user_setting(section, key);
  if (!text) return std::nullopt;
  int value = 0;
  const char* end = text->data() + text->size();
  const auto [stop, error] = std::from_chars(text->data(), end, value);
  if (error != std::errc() || stop != end || value < -value_limit || value > value_limit) return std::nullopt;
  return value;
}

void keep_placement_value(std::string_view section, std::string_view key, int value) {
  static_cast<void>(put_user_setting(section, key, std::to_string(value)));
}

QRect in_view(const QRect& place) {
  const QRect head(place.topLeft(), QSize(place.width(), grasp_height));
  const QScreen* nearest = nullptr;
  int distance = std::numeric_limits<int>::max();
  for (const QScreen* screen : QGuiApplication::screens()) {
    const QRect area = screen->availableGeometry();
    const QRect seen = area.intersected(head);
    if (seen.width() >= std::min(grasp_width, place.width()) && seen.height() >= grasp_height) return place;
    const QPoint at(std::clamp(place.center().x(), area.left(), area.right()),
                    std::clamp(place.center().y(), area.top(), area.bottom()));
    if (const int way = squared_distance(at, place.center()); way < distance) {
      distance = way;
      nearest = screen;
    }
  }
  if (nearest == nullptr) return place;
  const QRect area = nearest->availableGeometry();
  QRect moved(place.topLeft(), place.size().boundedTo(area.size()));
  moved.moveLeft(std::clamp(moved.left(), area.left(), area.right() - moved.width() + 1));
  moved.moveTop(std::clamp(moved.top(), area.top(), area.bottom() - moved.height() + 1));
  return moved;
}

}  // namespace orvane
