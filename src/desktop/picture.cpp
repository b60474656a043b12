#include "desktop/picture.h"

#include <QFileInfo>
#include <QImageReader>
#include <QVBoxLayout>

#include "desktop/look.h"
#include "desktop/texts.h"
#include "messages/catalogue.h"

namespace orvane {
namespace {

constexpr int picture_megabytes = 256;  // of memory, once it is unpacked
constexpr QSize missing_size(360, 240);

// Scaled as it is read, so that a picture of a modern camera costs no more than its place on the screen.
QImage read_picture(const QString& path, const QSize& room, bool grow, QString& reason) {
  QImageReader reader(path);
  reader.setAllocationLimit(picture_megabytes);
  reader.setAutoTransform(true);
  const QSize size = reader.size();
  if (size.isValid() && (grow || size.width() > room.width() || size.height() > room.height()))
    reader.setScaledSize(size.scaled(room, Qt::KeepAspectRatio));
  const QImage image = reader.read();
  if (image.isNull()) reason = reader.errorString();
  return image;
}

}  // namespace

PictureView::PictureView(QWidget* owner)
    : QWidget(owner), title_(new QLabel(this)), picture_(new QLabel(this)) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(title_);
  column->addWidget(picture_, 1);
  title_->setFont(font_for(TextRole::note));
  picture_->setAlignment(Qt::AlignCenter);
  picture_->setTextFormat(Qt::PlainText);
  picture_->setWordWrap(true);
  picture_->setFont(font_for(TextRole::note));
}

void PictureView::show_picture(const Picture& picture, const QSize& room, const QSize& screen) {
  title_->setText(shown(picture.title));
  title_->setVisible(!picture.title.empty());
  QSize limit = room;
  bool grow = false;
  if (picture.frame && picture.frame->width > 0 && picture.frame->height > 0) {
    limit = QSize(screen.width() * picture.frame->width / 100, screen.height() * picture.frame->height / 100);
    grow = true;
  }
  QString reason;
  const QImage image = read_picture(shown_path(picture.path), limit, grow, reason);
  missing_ = image.isNull();
  picture_->setFrameShape(missing_ ? QFrame::Box : QFrame::NoFrame);
  if (missing_) {
    picture_->setPixmap(QPixmap());
    picture_->setText(
        shown(msg(30809, typed(QFileInfo(shown_path(picture.path)).fileName()), typed(reason))));
    picture_->setMinimumSize(missing_size);
  } else {
    picture_->setPixmap(QPixmap::fromImage(image));
    picture_->setMinimumSize(image.size());
  }
}

}  // namespace orvane
