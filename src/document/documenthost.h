#pragma once
// What the document host offers the account adjustment document, as the document uses it. The desktop's
// main window implements these; tests use small fakes.
//
//   DocumentContainer  the container the document is shown in: its caption (the title of every message box
//                      of the system), its tag (handed to the status bar) and its name (names the document's
//                      working file);
//   ToolbarHost        the host's toolbar: the document adds its entries when shown and removes them when it
//                      goes away;
//   DocumentHost       the shared host object, which yields the toolbar host.

#include <QString>

#include <functional>

namespace adjustacc::document {

class DocumentContainer {
public:
  virtual ~DocumentContainer();
  virtual QString caption() const = 0;
  virtual QString tag() const = 0;
  virtual QString name() const = 0;
};

// One toolbar entry; the key names it for removal.
struct ToolbarEntry {
  QString key;
  QString caption;
  QString toolTip;
  std::function<void()> action;  // run when the clerk uses the entry
};

class ToolbarHost {
public:
  virtual ~ToolbarHost();
  // Adds the entry; an entry of the same key is replaced.
  virtual void addEntry(const ToolbarEntry& entry) = 0;
  // Removes the entry of that key; nothing happens when there is none.
  virtual void removeEntry(const QString& key) = 0;
  virtual bool hasEntry(const QString& key) const = 0;
};

class DocumentHost {
public:
  virtual ~DocumentHost();
  // The host's toolbar, or null when the host has none (the document then adds no entries).
  virtual ToolbarHost* toolbarHost() = 0;
};

}  // namespace adjustacc::document
