#include "platform/linux/qt_dialogs.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "platform/linux/default_button.h"
#include "platform/linux/keyboard_grab.h"
#include "platform/linux/qt_windows.h"
#include "platform/linux/tool_tip.h"
#include "platform/linux/view_pane.h"

namespace marbelot {
namespace {

constexpr const char* alertIdProperty = "marbelotAlert";

// Whether a dialog with that id is open; it is in front then.
bool raiseOpen(const QString& id) {
  for (QWidget* open : QApplication::topLevelWidgets()) {
    if (id.isEmpty() || !open->isVisible() || open->property(alertIdProperty) != id) continue;
    bringToFront(*open);
    return true;
  }
  return false;
}

void presentNow(const Alert& alert, const std::function<void(AlertAnswer)>& answered,
                PictureCache& pictures) {
  const QString id = QString::fromStdString(alert.id);
  if (raiseOpen(id)) return;
  auto* dialog = new QDialog;
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setProperty(windowIdProperty, "alert");
  dialog->setProperty(alertIdProperty, id);
  dialog->setWindowTitle("Marbelot");
  dialog->setModal(true);
  auto* column = new QVBoxLayout(dialog);
  column->setContentsMargins(20, 20, 20, 16);
  column->setSpacing(10);

  auto* message = new QLabel(QString::fromStdString(alert.message));
  QFont bold = message->font();
  bold.setBold(true);
  message->setFont(bold);
  auto* informative = new QLabel(QString::fromStdString(alert.informative));
  for (QLabel* label : {message, informative}) {
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setMinimumWidth(380);
    if (label->text().isEmpty()) {
      delete label;
    } else {
      column->addWidget(label);
    }
  }

  ViewPane* accessory = nullptr;
  if (!alert.accessory.empty()) {
    const Rect frame = alert.accessory.front().frame;
    accessory = new ViewPane(frame.size(), alert.accessory, pictures, nullptr);
    accessory->setFixedHeight(static_cast<int>(frame.height));
    accessory->setMinimumWidth(static_cast<int>(frame.width));
    column->addWidget(accessory);
  }

  // Answered once, whichever way the dialog ends.
  const auto answer = [alert, answered](std::size_t button, ViewPane* from) {
    answered({button, from ? *from->text(alert.accessory.front().id) : std::string()});
  };
  auto* row = new QHBoxLayout;
  row->addStretch();
  for (std::size_t index = alert.buttons.size(); index-- > 0;) {
    auto* button = new QPushButton(QString::fromStdString(alert.buttons[index]).replace("&", "&&"));
    button->setDefault(index == 0);
    button->setAutoDefault(index == 0);
    row->addWidget(button);
    QObject::connect(button, &QPushButton::clicked, dialog,
                     [dialog, index] { dialog->done(static_cast<int>(index) + 1); });
    if (index == 0) button->setToolTip(plainToolTip(alert.toolTip));
    if (index == 0 && accessory) {
      button->setToolTip(defaultButtonTip());
      auto* press = new QAction(dialog);
      press->setShortcuts({defaultButtonKey, QKeySequence(Qt::CTRL | Qt::Key_Enter)});
      QObject::connect(press, &QAction::triggered, button, &QPushButton::click);
      dialog->addAction(press);
    }
  }
  column->addLayout(row);
  QObject::connect(dialog, &QDialog::finished, dialog,
                   [answer, accessory, last = alert.buttons.size() - 1](int result) {
                     answer(result > 0 ? static_cast<std::size_t>(result) - 1 : last, accessory);
                   });
  dialog->adjustSize();
  dialog->setFixedSize(dialog->size());
  dialog->move(centred(dialog->frameGeometry()).topLeft());
  bringToFront(*dialog);
  if (accessory) {
    if (QWidget* text = accessory->find(alert.accessory.front().id)) text->setFocus();
  }
}

// Deletes itself when it is closed.
QFileDialog* makeFileDialog(const char* kind, const QString& id) {
  auto* dialog = new QFileDialog;
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setProperty(windowIdProperty, kind);
  dialog->setProperty(alertIdProperty, id);
  dialog->setModal(true);
  // The panel that asks for it is above ordinary windows.
  dialog->setWindowFlag(Qt::WindowStaysOnTopHint);
  return dialog;
}

void showFileDialog(QFileDialog& dialog, std::function<void(const std::string& path)> chosen) {
  QObject::connect(&dialog, &QFileDialog::accepted, &dialog, [&dialog, chosen = std::move(chosen)] {
    const QStringList files = dialog.selectedFiles();
    if (!files.isEmpty()) chosen(QFile::encodeName(files.first()).toStdString());
  });
  dialog.move(centred(dialog.frameGeometry()).topLeft());
  bringToFront(dialog);
}

}  // namespace

void QtDialogs::whenPossible(std::function<void()> work) {
  // Whatever comes on the screen is told to the accessibility bridge, which waits for the bus.
  bus_.whenKnown([work = std::move(work)] { KeyboardGrab::whenFree(work); });
}

void QtDialogs::chooseFolder(FolderPanel panel,
                             std::function<void(const std::string& folder)> chosen) {
  whenPossible([panel = std::move(panel), chosen = std::move(chosen)] {
    const QString id = QString::fromStdString(panel.id);
    if (raiseOpen(id)) return;
    QFileDialog* const dialog = makeFileDialog("folder", id);
    dialog->setWindowTitle(QString::fromStdString(panel.message));
    dialog->setLabelText(QFileDialog::Accept, QString::fromStdString(panel.prompt));
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    showFileDialog(*dialog, chosen);
  });
}

void QtDialogs::saveFile(FilePanel panel, std::function<void(const std::string& path)> chosen) {
  whenPossible([panel = std::move(panel), chosen = std::move(chosen)] {
    const QString id = QString::fromStdString(panel.id);
    if (raiseOpen(id)) return;
    const QString extension = QString::fromStdString(panel.extension);
    QFileDialog* const dialog = makeFileDialog("save", id);
    dialog->setWindowTitle("Save");
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setNameFilter(QString::fromStdString(panel.kind) + " (*." + extension + ")");
    dialog->setDefaultSuffix(extension);
    const QString folder = QFile::decodeName(panel.folder.c_str());
    dialog->setDirectory(QFileInfo(folder).isDir() ? folder : QDir::homePath());
    dialog->selectFile(QString::fromStdString(panel.name));
    showFileDialog(*dialog, chosen);
  });
}

void QtDialogs::present(Alert alert, std::function<void(AlertAnswer)> answered) {
  whenPossible([this, alert = std::move(alert), answered = std::move(answered)] {
    presentNow(alert, answered, pictures_);
  });
}

}  // namespace marbelot
