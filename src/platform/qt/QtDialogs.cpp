#include "platform/qt/QtDialogs.h"

#include <QAbstractButton>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <array>
#include <span>

#include "platform/qt/QtForm.h"
#include "platform/qt/QtMetrics.h"

namespace platform::qt {

namespace {

// ---- Message boxes ------------------------------------------------------------------------------

struct Answer {
  QMessageBox::StandardButton eButton;
  std::int32_t lResult;
};

constexpr std::int32_t BUTTONS_MASK = 0xF;
constexpr std::int32_t ICON_MASK = 0xF0;
constexpr std::int32_t SECOND_BUTTON = 0x100;
constexpr std::int32_t ICON_EXCLAMATION = 48;

constexpr std::array OK_ONLY = {Answer{QMessageBox::Ok, 1}};
constexpr std::array OK_CANCEL = {Answer{QMessageBox::Ok, 1}, Answer{QMessageBox::Cancel, 2}};
constexpr std::array YES_NO = {Answer{QMessageBox::Yes, 6}, Answer{QMessageBox::No, 7}};

/// In order; the last one is what closing the box answers.
std::span<const Answer> AnswersOf(std::int32_t lStyle) {
  switch (lStyle & BUTTONS_MASK) {
    case 1:
      return OK_CANCEL;
    case 4:
      return YES_NO;
    default:
      return OK_ONLY;
  }
}

QMessageBox::Icon IconOf(std::int32_t lStyle) {
  switch (lStyle & ICON_MASK) {
    case 16:
      return QMessageBox::Critical;
    case 32:
      return QMessageBox::Question;
    case ICON_EXCLAMATION:
      return QMessageBox::Warning;
    case 64:
      return QMessageBox::Information;
    default:
      return QMessageBox::NoIcon;
  }
}

// ---- File dialog --------------------------------------------------------------------------------

constexpr std::int32_t OFN_PATHMUSTEXIST = 0x800;
constexpr std::int32_t OFN_FILEMUSTEXIST = 0x1000;
constexpr std::int32_t FNERR_BUFFERTOOSMALL = 0x3003;

/// Qt's filters, "caption (patterns)", of "caption|pattern;pattern|caption|...".
QStringList FiltersOf(std::string_view sFilter) {
  const QStringList asPart = TextOf(sFilter).split(QLatin1Char('|'));
  QStringList asFilter;
  for (qsizetype lPart = 0; lPart + 1 < asPart.size(); lPart += 2) {
    QStringList asPattern = asPart.at(lPart + 1).split(QLatin1Char(';'));
    // Windows means every name by it, with or without a dot.
    asPattern.replaceInStrings(QStringLiteral("*.*"), QStringLiteral("*"));
    asFilter += asPart.at(lPart) + QLatin1String(" (") + asPattern.join(QLatin1Char(' ')) +
                QLatin1Char(')');
  }
  return asFilter;
}

/// Qt's file dialog, but for names with a double quote. Qt takes quotes for what stands around each
/// of several names, so that q"uote.txt would become uote.txt; here such a name is one like others.
class QuotesKeepingDialog final : public QFileDialog {
 public:
  using QFileDialog::QFileDialog;

  QString Chosen() const { return sQuoted.isEmpty() ? selectedFiles().value(0) : sQuoted; }

  void accept() override {
    // Qt's own dialog alone has this field, and desktops' dialogs alone give what they mean.
    const auto* txtName = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    sQuoted.clear();
    if (txtName == nullptr || !txtName->text().contains(QLatin1Char('"')))
      return QFileDialog::accept();
    const QString sPath = directory().absoluteFilePath(txtName->text());
    if (QFileInfo(sPath).isDir()) return setDirectory(sPath);
    sQuoted = sPath;
    done(QDialog::Accepted);
  }

 private:
  QString sQuoted;  // the path of a name with a quote, once chosen
};

/// What is wrong with a chosen name, by the request's flags; empty: nothing.
QString Complaint(const QFileInfo& tChosen, std::int32_t lFlags) {
  if ((lFlags & OFN_PATHMUSTEXIST) != 0 && !tChosen.dir().exists())
    return QStringLiteral("Path does not exist.");
  if ((lFlags & OFN_FILEMUSTEXIST) != 0 && !tChosen.isFile())
    return QStringLiteral("File not found.");
  return {};
}

}  // namespace

std::int32_t RunMessageBox(QtForm* pOwner, std::string_view sPrompt, std::int32_t lStyle,
                           std::string_view sTitle) {
  const std::span<const Answer> atAnswer = AnswersOf(lStyle);
  // A form that has not been shown yet cannot carry a window.
  QMessageBox tBox(pOwner != nullptr && pOwner->isVisible() ? pOwner : nullptr);
  tBox.setWindowTitle(TextOf(sTitle));
  tBox.setTextFormat(Qt::PlainText);
  tBox.setText(TextOf(sPrompt).replace(QLatin1String("\r\n"), QLatin1String("\n")));
  tBox.setIcon(IconOf(lStyle));
  for (const Answer& tAnswer : atAnswer) tBox.addButton(tAnswer.eButton);
  tBox.setDefaultButton((lStyle & SECOND_BUTTON) != 0 && atAnswer.size() > 1 ? atAnswer[1].eButton
                                                                             : atAnswer[0].eButton);
  tBox.setEscapeButton(atAnswer.back().eButton);
  if (pOwner != nullptr) {
    pOwner->RunDialog(tBox);
  } else {
    tBox.setWindowModality(Qt::WindowModal);
    tBox.exec();
  }
  // A box whose form is gone by now may have been answered while another box was on top of it.
  const bool bGone = pOwner != nullptr && pOwner->IsUnloaded();
  for (const Answer& tAnswer : atAnswer) {
    const auto* cmd = tBox.clickedButton();
    if (!bGone && cmd != nullptr && cmd == tBox.button(tAnswer.eButton)) return tAnswer.lResult;
  }
  return atAnswer.back().lResult;
}

FileDialogResult RunFileDialog(QtForm& frm, const FileDialogRequest& tRequest) {
  QuotesKeepingDialog tDialog(&frm);
  tDialog.setAcceptMode(tRequest.bSave ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  tDialog.setFileMode((tRequest.lFlags & OFN_FILEMUSTEXIST) != 0 ? QFileDialog::ExistingFile
                                                                 : QFileDialog::AnyFile);
  // Whether to overwrite is the caller's question.
  tDialog.setOption(QFileDialog::DontConfirmOverwrite);
  tDialog.setOption(QFileDialog::HideNameFilterDetails);
  const QStringList asFilter = FiltersOf(tRequest.sFilter);
  tDialog.setNameFilters(asFilter);
  if (tRequest.lFilterIndex >= 1 && tRequest.lFilterIndex <= asFilter.size())
    tDialog.selectNameFilter(asFilter.at(tRequest.lFilterIndex - 1));
  if (!tRequest.sFileName.empty()) tDialog.selectFile(TextOf(tRequest.sFileName));

  while (frm.RunDialog(tDialog) == QDialog::Accepted) {
    const QString sChosen = tDialog.Chosen();
    const QString sComplaint = Complaint(QFileInfo(sChosen), tRequest.lFlags);
    if (sComplaint.isEmpty()) {
      const std::string sPath = sChosen.toStdString();
      if (tRequest.lMaxFileSize > 0 &&
          sPath.size() > static_cast<std::size_t>(tRequest.lMaxFileSize))
        return {FileDialogResult::Outcome::Failed, {}, FNERR_BUFFERTOOSMALL, "Path too long"};
      return {FileDialogResult::Outcome::Chosen, sPath, 0, {}};
    }
    const QString sText = sChosen + QLatin1String("\n") + sComplaint;
    RunMessageBox(&frm, sText.toStdString(), ICON_EXCLAMATION, tDialog.windowTitle().toStdString());
  }
  return {};
}

}  // namespace platform::qt
