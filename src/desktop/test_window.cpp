#include "desktop/test_window.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QVBoxLayout>

#include "desktop/button.h"
#include "desktop/look.h"
#include "desktop/text_pane.h"
#include "desktop/texts.h"
#include "desktop/why_window.h"
#include "messages/catalogue.h"

namespace orvane {
namespace {

constexpr int why_code = -1;  // the window's own button: the engine never sees it

// Where each button stands, in the window's order from left to right, and its function key. What cannot be taken back,
// Cancel result and Term, has none.
struct ButtonPlace {
  int code;
  bool aside;  // in the upper row, of what leaves the window waiting
  int key;
};
constexpr ButtonPlace places[] = {
    {answer::test_comment, true, Qt::Key_F2},
    {answer::test_list, true, Qt::Key_F3},
    {answer::test_settings, true, Qt::Key_F4},
    {why_code, true, Qt::Key_F5},
    {answer::test_cancel, true, 0},
    {answer::test_repeat, false, Qt::Key_F6},
    {answer::test_adjust, false, Qt::Key_F7},
    {answer::test_continue, false, 0},
    {answer::test_term, false, 0},
};

bool fits_row(const std::string& text) { return text.size() <= 60 && text.find('\n') == std::string::npos; }

}  // namespace

TestBox::TestBox(QWidget* owner)
    : DeskWindow(owner),
      banner_(new QFrame(this)),
      sign_(new QLabel(banner_)),
      status_(new QLabel(banner_)),
      grid_(new QGridLayout),
      long_text_(new TextPane(this)),
      aside_(new QHBoxLayout) {
  auto* row = new QHBoxLayout(banner_);
  row->setContentsMargins(18, 12, 18, 12);
  row->setSpacing(18);
  row->addWidget(sign_);
  row->addWidget(status_, 1);
  banner_->setFrameShape(QFrame::Box);
  banner_->setLineWidth(3);
  banner_->setAutoFillBackground(true);
  sign_->setFont(font_for(TextRole::verdict));
  status_->setTextFormat(Qt::PlainText);
  status_->setWordWrap(true);
  grid_->setHorizontalSpacing(24);
  grid_->setVerticalSpacing(6);
  grid_->setColumnStretch(1, 1);
  aside_->setSpacing(12);
  body()->addWidget(banner_);
  body()->addLayout(grid_, 1);
  body()->addWidget(long_text_);
  body()->addLayout(aside_);
  set_leave_code(answer::test_term);
  setMinimumWidth(640);
}

TestBox::~TestBox() = default;

int TestBox::ask(const TestWindow& window) {
  if (is_waiting()) return answer::failed;
  setWindowTitle(shown(window.title));
  show_status(window);
  show_texts(window);
  show_buttons(window);
  shown_ = &window;
  const int code = wait_for_answer();
  shown_ = nullptr;
  if (why_ != nullptr) why_->hide();
  return code;
}

void TestBox::press(int code) { code == why_code ? explain() : DeskWindow::press(code); }

void TestBox::explain() {
  if (shown_ == nullptr || shown_->explanation.empty()) return;
  if (why_ == nullptr) why_ = std::make_unique<WhyBox>(this);
  why_->open(shown(shown_->title), shown_->explanation, shown_->colour);
}

void TestBox::show_status(const TestWindow& window) {
  QPalette colours = palette();
  const QColor colour = verdict_colour(window.colour, colours);
  colours.setColor(QPalette::Window, colours.color(QPalette::Base));
  colours.setColor(QPalette::WindowText, colour);
  banner_->setPalette(colours);
  sign_->setText(verdict_sign(window.colour));
  const QString text = shown(window.status_text).simplified();
  status_->setFont(font_for(text.size() > 40 ? TextRole::prompt : TextRole::verdict));
  status_->setText(text);
  // A long reason is read in the colour of texts; the frame and the sign keep the verdict's.
  QPalette of_text = colours;
  if (text.size() > 40) of_text.setColor(QPalette::WindowText, colours.color(QPalette::Text));
  status_->setPalette(of_text);
}

void TestBox::show_texts(const TestWindow& window) {
  std::vector<LabelledText> rows;
  QString long_text;
  for (const LabelledText& text : window.texts) {
    if (fits_row(text.text)) {
      rows.push_back(text);
    } else {
      long_text += (long_text.isEmpty() ? "" : "\n") + shown(text.label) + "\n" + shown(text.text);
    }
  }
  long_text_->setVisible(!long_text.isEmpty());
  long_text_->set_text(long_text, font_for(TextRole::note));
  while (labels_.size() < 2 * rows.size()) make_row();
  for (std::size_t i = 0; i < labels_.size(); ++i) {
    const bool used = i / 2 < rows.size();
    labels_[i]->setVisible(used);
    if (used) labels_[i]->setText(shown(i % 2 == 0 ? rows[i / 2].label : rows[i / 2].text).trimmed());
  }
}

void TestBox::make_row() {
  const int row = static_cast<int>(labels_.size() / 2);
  for (const TextRole role : {TextRole::note, TextRole::prompt}) {
    auto* label = new QLabel(this);
    const bool is_value = role == TextRole::prompt;
    label->setTextFormat(Qt::PlainText);
    label->setFont(font_for(role));
    if (is_value) label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    grid_->addWidget(label, row, is_value ? 1 : 0,
                     is_value ? Qt::Alignment() : Qt::AlignRight | Qt::AlignVCenter);
    labels_.push_back(label);
  }
}

void TestBox::show_buttons(const TestWindow& window) {
  const auto of_code = [&](int code) -> const TestWindow::TestButton* {
    for (const TestWindow::TestButton& one : window.buttons) {
      if (one.button.code == code) return &one;
    }
    return nullptr;
  };
  std::vector<Button> aside, below;
  for (const ButtonPlace& place : places) {
    const TestWindow::TestButton* one = of_code(place.code);
    if (one == nullptr && place.code != why_code) continue;
    Button button = one != nullptr ? one->button : Button{why_code, msg(31120), false};
    if (place.key != 0) button.label += "  (F" + std::to_string(place.key - Qt::Key_F1 + 1) + ")";
    (place.aside ? aside : below).push_back(button);
  }
  set_buttons(below, aside_, aside);
  for (const TestWindow::TestButton& one : window.buttons) enable_button(one.button.code, one.enabled);
  enable_button(why_code, !window.explanation.empty());
}

void TestBox::keyPressEvent(QKeyEvent* event) {
  if (event->text() == "?" && !event->isAutoRepeat()) return explain();
  for (const ButtonPlace& place : places) {
    if (place.key == 0 || event->key() != place.key || event->isAutoRepeat()) continue;
    if (DeskButton* one = button(place.code); one != nullptr && one->isEnabled()) one->click();
    return;
  }
  DeskWindow::keyPressEvent(event);
}

}  // namespace orvane
