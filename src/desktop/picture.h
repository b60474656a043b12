// A picture beside the lines. One that is missing or damaged is told in its place, and the window goes on.
#pragma once

#include <QLabel>

#include "platform/operator.h"

namespace orvane {

class PictureView : public QWidget {
 public:
  explicit PictureView(QWidget* owner);
  /// Loads the picture; at most `room` large unless its frame says otherwise.
  void show_picture(const Picture& picture, const QSize& room, const QSize& screen);
  bool is_missing() const { return missing_; }

 private:
  QLabel* title_;
  QLabel* picture_;
  bool missing_ = false;
};

}  // namespace orvane
