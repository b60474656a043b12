#include "desktop/main_window.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>
#include <QTimer>

#include "config/startup_config.h"
#include "desktop/look.h"
#include "desktop/placement.h"
#include "desktop/texts.h"
#include "desktop/tools.h"
#include "messages/catalogue.h"
#include "procedure/pipeline/database.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::string_view section = "Run Time Main";
constexpr int open_delay = 150;  // milliseconds
constexpr int keep_delay = 400;  // milliseconds behind the last move
constexpr QSize first_size(760, 460), least_size(560, 340);
constexpr int abort_height = 48, abort_width = 170;

// The rows of the status window and their captions.
struct StatusCaption {
  int row;
  int caption;
};
constexpr StatusCaption captions[] = {{status_row::procedure, 30840},
                                      {status_row::revision, 30841},
                                      {status_row::operator_name, 30842},
                                      {status_row::mode, 30843}};

QString clock_text(std::uint32_t seconds) {
  const auto two = [](std::uint32_t part) { return QString("%1").arg(part, 2, 10, QChar('0')); };
  const QString rest = two(seconds / 60 % 60) + ":" + two(seconds % 60);
  return seconds >= 3600 ? QString::number(seconds / 3600) + ":" + rest : rest;
}

QString test_text(std::size_t test, std::size_t tests) {
  if (test == 0) return {};
  return shown(tests > 0 ? msg(30846, test, tests) : msg(30847, test));
}

QString statement_text(std::size_t statement, std::size_t statements) {
  if (statement == 0) return {};
  return shown(statements > 0 ? msg(30848, statement, statements) : msg(30849, statement));
}

}  // namespace

MainWindow::MainWindow() : keeper_(new QTimer(this)) {
  setWindowTitle(shown(msg(30040)));
  keeper_->setSingleShot(true);
  connect(keeper_, &QTimer::timeout, this, [this] { keep_place(); });
  make_menu();
  make_rows();
  setMinimumSize(least_size);
  enable_commands();
}

MainWindow::~MainWindow() = default;

// --- Menu ---

QAction* MainWindow::make_action(const MenuCommand& row) {
  auto* item = new QAction(this);
  const int id = row.id;
  if (row.key != nullptr) item->setShortcut(QKeySequence(row.key));
  item->setCheckable(row.is_checked_item);
  if (row.missing != 0) {
    item->setStatusTip(shown(catalogue_text(row.missing)));
    item->setToolTip(item->statusTip());
  }
  connect(item, &QAction::triggered, this, [this, id] { give(id); });
  actions_[id] = item;
  return item;
}

void MainWindow::make_menu() {
  std::vector<QString> titles;
  for (const MenuTitle& title : menu_titles()) titles.push_back(shown(catalogue_text(title.title)));
  titles = with_access_keys(titles);
  std::size_t at = 0;
  for (const MenuTitle& title : menu_titles()) {
    QMenu* menu = menuBar()->addMenu(titles[at++]);
    menu->setToolTipsVisible(true);
    if (title.menu == Menu::tools) tools_ = menu;
    std::vector<QString> labels;
    std::vector<QAction*> items;
    for (const MenuCommand& row : menu_commands()) {
      if (row.menu != title.menu) continue;
      if (row.id == command::by_workload && startup_config().workload_data.empty()) continue;
      if (row.begins_group) menu->addSeparator();
      items.push_back(make_action(row));
      menu->addAction(items.back());
      labels.push_back(shown(catalogue_text(row.label)));
    }
    labels = with_access_keys(labels);
    for (std::size_t i = 0; i < items.size(); ++i) items[i]->setText(labels[i]);
  }
  // The key is told beside the label; it is taken everywhere in the program, not by the menu.
  actions_[command::abort]->setText(actions_[command::abort]->text() + "\tF10");
  connect(tools_, &QMenu::aboutToShow, this, [this] { make_tools(); });
}

void MainWindow::make_tools() {
  tools_->clear();
  int id = command::first_tool;
  for (const Tool& tool : configured_tools()) {
    QAction* item = tools_->addAction(shown(tool.name).replace('&', "&&"));
    item->setStatusTip(shown(tool.command));
    item->setEnabled(!busy_);
    connect(item, &QAction::triggered, this, [this, id] { give(id); });
    ++id;
  }
  if (!tools_->isEmpty()) return;
  QAction* none = tools_->addAction(shown(msg(30850)));
  none->setStatusTip(shown(msg(30851)));
  none->setEnabled(false);
}

QAction* MainWindow::action(int id) const {
  const auto at = actions_.find(id);
  return at != actions_.end() ? at->second : nullptr;
}

void MainWindow::enable_commands() {
  for (const auto& [id, item] : actions_) {
    const bool offered = menu_command(id)->missing == 0;
    item->setEnabled(id == command::abort ? run_on_ : offered && !busy_);
  }
  run_->setEnabled(!busy_);
  run_->setVisible(!run_on_);
  abort_->setVisible(run_on_);
}

void MainWindow::give(int id) {
  if (id == command::abort) {
    if (run_on_ && on_command) on_command(id);
    return;
  }
  if (busy_) {
    QApplication::beep();
    if (id == command::reset && run_on_ && !refusing_) {
      refusing_ = true;
      msgp(2113);
      refusing_ = false;
    }
    return;
  }
  const MenuCommand* row = menu_command(id);
  if (row != nullptr && row->missing != 0) return;
  if (!operator_may(row != nullptr ? row->right : operator_right::common)) {
    errp(2177, row != nullptr ? std::string(catalogue_text(row->label)) : tool_name(id));
    return;
  }
  if (on_command) on_command(id);
}

void MainWindow::set_busy(bool busy) {
  busy_ = busy;
  enable_commands();
}

void MainWindow::set_run(bool on) {
  run_on_ = on;
  bar_->setVisible(on);
  progress_->setVisible(on);
  if (!on) {
    bar_->reset();
    progress_->clear();
    heading_->setText(idle_text_);
  } else if (heading_->text() == idle_text_) {
    heading_->clear();
  }
  enable_commands();
}

// --- Status ---

// Two fonts and no more: each further one costs the start a millisecond.
void MainWindow::make_rows() {
  auto* middle = new QWidget(this);
  auto* column = new QVBoxLayout(middle);
  column->setContentsMargins(20, 16, 20, 12);
  column->setSpacing(12);
  auto* grid = new QGridLayout;
  grid->setHorizontalSpacing(18);
  grid->setVerticalSpacing(6);
  grid->setColumnStretch(1, 1);
  int at = 0;
  for (const StatusCaption& one : captions) {
    auto* caption = new QLabel(shown(catalogue_text(one.caption)));
    auto* text = new QLabel;
    text->setTextFormat(Qt::PlainText);
    text->setFont(font_for(TextRole::heading));
    text->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    grid->addWidget(caption, at, 0, Qt::AlignRight | Qt::AlignVCenter);
    grid->addWidget(text, at++, 1);
    rows_[one.row] = text;
  }
  heading_ = new QLabel;
  heading_->setTextFormat(Qt::PlainText);
  heading_->setFont(font_for(TextRole::heading));
  heading_->setAlignment(Qt::AlignCenter);
  heading_->setWordWrap(true);
  heading_->setFrameShape(QFrame::StyledPanel);
  heading_->setBackgroundRole(QPalette::Base);
  heading_->setForegroundRole(QPalette::Text);
  heading_->setAutoFillBackground(true);
  progress_ = new QLabel;  // shown in a run only, so that its font costs no start
  progress_->setFont(font_for(TextRole::note));
  bar_ = new QProgressBar;
  bar_->setTextVisible(false);
  run_ = new QPushButton(middle);
  abort_ = new QPushButton(middle);
  const auto set_up = [](QPushButton* button, const QString& text) {
    button->setText(text);
    button->setFont(font_for(TextRole::heading));
    button->setMinimumSize(abort_width, abort_height);
    button->setFocusPolicy(Qt::TabFocus);
  };
  set_up(run_, "&" + shown(msg(30844)));
  set_up(abort_, "&" + shown(msg(30845)));
  connect(run_, &QPushButton::clicked, this, [this] { give(command::run); });
  connect(abort_, &QPushButton::clicked, this, [this] { give(command::abort); });
  auto* bottom = new QHBoxLayout;
  bottom->addWidget(progress_);
  bottom->addStretch(1);
  bottom->addWidget(run_);
  bottom->addWidget(abort_);
  column->addLayout(grid);
  column->addWidget(heading_, 1);
  column->addWidget(bar_);
  column->addLayout(bottom);
  bar_->hide();
  progress_->hide();
  setCentralWidget(middle);
  statusBar()->setSizeGripEnabled(false);
}

void MainWindow::show_idle_text(const QString& text) {
  if (!run_on_ && heading_->text() == idle_text_) heading_->setText(text);
  idle_text_ = text;
}

void MainWindow::show_status(int row, const QString& text) {
  if (row == status_row::heading) {
    heading_->setText(text);
    return;
  }
  const auto at = rows_.find(row);
  if (at == rows_.end()) return;
  at->second->setText(text);
  at->second->setToolTip(text);  // a name may be longer than the row
}

void MainWindow::show_progress(const RunProgress& progress) {
  const bool tests_known = progress.tests > 0;
  const std::size_t whole = tests_known ? progress.tests : progress.statements;
  bar_->setMaximum(static_cast<int>(whole));
  bar_->setValue(static_cast<int>(std::min(tests_known ? progress.test : progress.statement, whole)));
  QStringList parts = {test_text(progress.test, progress.tests),
                       statement_text(progress.statement, progress.statements), clock_text(progress.seconds)};
  parts.removeAll(QString());
  progress_->setText(parts.join("   \u00B7   "));
}

void MainWindow::show_checks(std::string_view method, bool real) {
  const auto check = [&](int id, bool on) {
    if (QAction* item = action(id)) item->setChecked(on);
  };
  check(command::by_asset, method == "by_asset");
  check(command::by_workload, method == "by_work");
  check(command::by_procedure, method != "by_asset" && method != "by_work");
  check(command::real_mode, real);
}

// --- Place and closing ---

void MainWindow::open() {
  QRect place(QPoint(80, 60), first_size);
  const auto left = placement_value(section, "Left"), top = placement_value(section, "Top"),
             width = placement_value(section, "Width"), height = placement_value(section, "Height");
  if (left && top) place.moveTopLeft({*left, *top});
  if (width && height) place.setSize(QSize(*width, *height).expandedTo(least_size));
  setGeometry(in_view(place));
  show();
}

void MainWindow::open_soon() {
  opener_ = new QTimer(this);
  opener_->setSingleShot(true);
  connect(opener_, &QTimer::timeout, this, [this] { open(); });
  opener_->start(open_delay);
}

void MainWindow::open_if_due() {
  if (opener_ == nullptr || !opener_->isActive()) return;
  opener_->stop();
  open();
}

void MainWindow::keep_place() {
  keeper_->stop();
  if (windowState() & (Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen)) return;
  keep_placement_value(section, "Left", geometry().left());
  keep_placement_value(section, "Top", geometry().top());
  keep_placement_value(section, "Width", width());
  keep_placement_value(section, "Height", height());
}

void MainWindow::moveEvent(QMoveEvent* event) {
  QMainWindow::moveEvent(event);
  if (isVisible()) keeper_->start(keep_delay);
}

void MainWindow::resizeEvent(QResizeEvent* event) {
  QMainWindow::resizeEvent(event);
  if (isVisible()) keeper_->start(keep_delay);
}

// While a run is on the window stays in sight.
void MainWindow::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() == QEvent::WindowStateChange && run_on_ && isMinimized())
    QTimer::singleShot(0, this, [this] { showNormal(); });
}

void MainWindow::refuse_close() {
  QApplication::beep();
  if (!run_on_ || refusing_) return;
  refusing_ = true;
  msgp(2298);
  refusing_ = false;
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (busy_) {
    event->ignore();
    refuse_close();
    return;
  }
  if (isVisible()) keep_place();
  event->accept();
  if (on_close) on_close();
}

bool is_abort_key(int key, Qt::KeyboardModifiers modifiers) {
  if (key == Qt::Key_Cancel) return true;
  if (key == Qt::Key_Pause) return (modifiers & Qt::ControlModifier) != 0;
  return key == Qt::Key_F10 && modifiers == Qt::NoModifier;
}

}  // namespace orvane
