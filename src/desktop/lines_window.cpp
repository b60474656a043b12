#include "desktop/lines_window.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QScreen>
#include <QStyle>

#include "desktop/button.h"
#include "desktop/look.h"
#include "desktop/picture.h"
#include "desktop/text_pane.h"
#include "desktop/texts.h"
#include "messages/catalogue.h"

namespace orvane {

LinesBox::LinesBox(QWidget* owner)
    : DeskWindow(owner), text_(new TextPane(this)), picture_(new PictureView(this)) {
  auto* row = new QHBoxLayout;
  row->setSpacing(24);
  row->addWidget(picture_);
  row->addWidget(text_, 1);
  body()->addLayout(row, 1);
}

int LinesBox::ask(const LinesWindow& window) {
  setWindowTitle(shown(window.title));
  text_->set_lines(window.lines);
  verdict_ = window.kind == WindowKind::evaluation || window.kind == WindowKind::picture;
  picture_->setVisible(window.picture.has_value());
  frame_ = QRect();
  if (window.picture) {
    const QRect screen = this->screen()->availableGeometry();
    picture_->show_picture(*window.picture, screen.size() * 0.55, screen.size());
    if (const auto& frame = window.picture->frame; frame && (frame->x > 0 || frame->y > 0)) {
      layout()->activate();
      frame_ =
          QRect(screen.topLeft() + QPoint(screen.width() * frame->x / 100, screen.height() * frame->y / 100),
                sizeHint());
      frame_.moveRight(std::min(frame_.right(), screen.right()));
      frame_.moveBottom(std::min(frame_.bottom(), screen.bottom()));
    }
  }
  set_buttons(window.buttons);
  return wait_for_answer();
}

int LinesBox::escape_code() const {
  const int refusal = DeskWindow::escape_code();
  if (refusal != answer::failed || verdict_) return refusal;
  return button(answer::no) != nullptr ? answer::no : answer::failed;
}

MessageBox::MessageBox(QWidget* owner)
    : DeskWindow(owner), sign_(new QLabel(this)), text_(new TextPane(this)) {
  auto* row = new QHBoxLayout;
  row->setSpacing(18);
  row->addWidget(sign_, 0, Qt::AlignTop);
  row->addWidget(text_, 1);
  body()->addLayout(row, 1);
  set_leave_code(answer::ok);
}

void MessageBox::tell(MessageKind kind, const QString& text) {
  const bool information = kind == MessageKind::information;
  setWindowTitle(shown(information ? msg(30812) : kind == MessageKind::warning ? msg(30811) : msg(30810)));
  const QStyle::StandardPixmap sign = information                    ? QStyle::SP_MessageBoxInformation
                                      : kind == MessageKind::warning ? QStyle::SP_MessageBoxWarning
                                                                     : QStyle::SP_MessageBoxCritical;
  sign_->setPixmap(style()->standardIcon(sign).pixmap(48, 48));
  text_->set_text(text, font_for(TextRole::prompt));
  set_buttons({{answer::ok, msg(30043), true}});
  wait_for_answer();
}

}  // namespace orvane
