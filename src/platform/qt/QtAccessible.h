#pragma once

#include <QAccessible>

class QLineEdit;
class QMenu;
class QString;

namespace platform::qt {

class ListView;

/// Has assistive tools, such as a screen reader, meet this program's own descriptions of itself, of
/// lists and of text fields in place of Qt's. Call it once, after the application object was made.
void InstallAccessibility();

/// Has assistive tools not hear, while it lives, of what the program does to a field: its steps are
/// nothing that was typed. A screen reader takes a field whose text changes for the one with the
/// focus, and then says nothing when the focus does come to it.
class UntoldChange {
 public:
  UntoldChange() : fnBefore(QAccessible::installUpdateHandler([](QAccessibleEvent*) {})) {}
  ~UntoldChange() { QAccessible::installUpdateHandler(fnBefore); }
  UntoldChange(const UntoldChange&) = delete;
  UntoldChange& operator=(const UntoldChange&) = delete;

 private:
  QAccessible::UpdateHandler fnBefore;
};

/// Gives a field the name that assistive tools know it by. Where it has the focus they are told of
/// another field with that name that got the focus: a screen reader says nothing of a new name.
void RenameField(QLineEdit& txt, const QString& sName);

/// Tells assistive tools of a pop-up menu that opens without an item being chosen, of which they
/// would hear nothing.
void ReportPopupSoon(QMenu& mnu);

/// Tells assistive tools that the focus is on a list's selected line, where the list has the focus
/// and a line is selected.
void ReportFocusOnLine(ListView& lst);

/// As ReportFocusOnLine, but after Qt has told of the list's own focus, which is under way.
void ReportFocusOnLineSoon(ListView& lst);

}  // namespace platform::qt
