#pragma once
// A code box (QORVA_CodesCombo, mFtcbo...): the rows of one code table (code and description), filled
// by a code-table query text through a CodeTableSource; the person picks a row or types a text.
//
// The typed text selects the row whose description or code it equals (trimmed, ignoring case). A text
// that equals neither selects nothing: selectedCode() is then empty and matchesNoCode() tells the
// screen's validation that the person typed something that is not a code.

#include "messaging/recordset.h"
#include "messaging/result.h"
#include "platform/control.h"

namespace adjustacc::platform {

class CodeTableSource;

class CodesCombo : public Control {
  Q_OBJECT
public:
  explicit CodesCombo(QString name, QObject* parent = nullptr);

  // Where fill() runs its query; not owned. Must outlive the box or be reset.
  void setSource(CodeTableSource* source) { m_source = source; }

  // The code table the box stands for ("ADJDOC"); a property the screens set and read.
  QString codeTable() const { return m_codeTable; }
  void setCodeTable(const QString& codeTable);
  // Chosen after every fill when the code is among the rows.
  QString defaultCode() const { return m_defaultCode; }
  void setDefaultCode(const QString& code);

  // Runs the query text and takes its rows (fields CD_TBL_ID, CD_TBL_CD, CD_TBL_DES). The previous choice
  // is dropped; the default code is chosen when present. On failure the box is left empty and the error
  // says why. Returns the number of rows.
  messaging::Result<int> fill(const QString& queryText);
  // Takes rows directly (e.g. rows already read); the same checks and effects as fill().
  messaging::Result<int> setRows(const messaging::RecordSet& rows);

  // --- rows ----------------------------------------------------------------------------------------
  int rowCount() const;
  QString codeAt(int row) const;
  QString descriptionAt(int row) const;
  // The rows as filled (unfiltered); a copy shares storage.
  const messaging::RecordSet& rows() const { return m_rows; }

  // --- choice --------------------------------------------------------------------------------------
  // Row of the chosen code, -1 when none.
  int currentRow() const { return m_current; }
  // The chosen code (CD_TBL_CD, trimmed), empty when nothing matches.
  QString selectedCode() const;
  // Description of the chosen code, empty when nothing matches.
  QString description() const;
  // The text in the box: the chosen row's description, or what the person typed.
  QString text() const { return m_text; }
  // Nothing chosen and nothing typed.
  bool isEmpty() const { return m_current < 0 && m_text.trimmed().isEmpty(); }
  // Something typed that is no code of the box.
  bool matchesNoCode() const { return m_current < 0 && !m_text.trimmed().isEmpty(); }

  // Finds the code's row by the filter "CD_TBL_CD = 'code'" and chooses it; false (choice cleared, text
  // set to the code) when the box has no such code.
  bool setCode(const QString& code);
  // Row of a code by the same filter, -1 when absent.
  int findCode(const QString& code) const;
  bool setCurrentRow(int row);
  // Sets the text as if typed by the screen: it chooses the row it equals, if any.
  void setText(const QString& text);
  // Clears the choice and the text.
  void clear();

  bool isLocked() const { return m_locked; }
  void setLocked(bool locked);

  // --- what the view calls --------------------------------------------------------------------------
  // The person picks a row from the list / types a text; refused when locked or unusable.
  bool userChooseRow(int row);
  bool userSetText(const QString& text);
  bool canEdit() const;

Q_SIGNALS:
  void textChanged(const QString& text);  // Change: the text or the chosen code changed
  void rowsChanged();                     // filled again

private:
  messaging::Result<int> takeRows(const messaging::RecordSet& rows);
  int matchText(const QString& text) const;
  void choose(int row, const QString& text);

  CodeTableSource* m_source = nullptr;
  QString m_codeTable;
  QString m_defaultCode;
  messaging::RecordSet m_rows;
  int m_codeField = -1;
  int m_descField = -1;
  int m_current = -1;
  QString m_text;
  bool m_locked = false;
};

// The name the screens know it by.
using QORVA_CodesCombo = CodesCombo;

}  // namespace adjustacc::platform
