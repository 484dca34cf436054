#pragma once
// The "Account Activity" screen (QORVA_Activity): the log of dated activity entries (calls, letters, notes,
// each with an activity code and a comment) of one account receivable. The officer filters the log, adds
// an entry, or changes an entry that is not system-made. This screen sends nothing: each change stays in its
// row set, the row marked by ACTION ("ADD" for a row added here, "UPD" for a row changed here), and the
// opener sends the marked rows with its own save.
//
// How the account receivable detail screen opens it:
//
//   activity::QORVA_Activity activity(m_services);
//   activity.setARNumber(numberWithCheckDigit);   // "1000011-5": first seven characters, last one the digit
//   activity.setARType(typeCode);                  // after the number: "P" gives the installment caption
//   activity.LoadActivity(reply, requestId);       // the reply's "ACCOUNTACTIVITY" rows
//   activity.showModal();
//   if (activity.SaveChange()) {
//     const messaging::RecordSet changed = activity.changedRows();   // the ADD and UPD rows only
//     ... one "ACCOUNTACTIVITY" save record per row of `changed` ...
//   }

#include "messaging/recordset.h"
#include "messaging/reply.h"
#include "platform/button.h"
#include "platform/codescombo.h"
#include "platform/controlarray.h"
#include "platform/datacontrol.h"
#include "platform/datepicker.h"
#include "platform/frame.h"
#include "platform/grid.h"
#include "platform/label.h"
#include "platform/textbox.h"
#include "screencore/modalscreen.h"

#include <QDate>
#include <QString>

namespace adjustacc::activity {

class QORVA_Activity : public screencore::ModalScreen {
  Q_OBJECT
public:
  static inline const QString kFormName = QStringLiteral("QORVA_Activity");
  static inline const QString kCaption = QStringLiteral("Account Activity");
  // The rows always show newest first.
  static inline const QString kActivitySort = QStringLiteral("ACTVTY_DT desc, ACTVTY_TM desc, LST_UPDT_TS desc");
  // No activity entry is dated before the log began.
  static inline const QDate kFirstActivityDate{1997, 1, 27};

  // Indexes of mCmdActivity.
  enum Buttons {
    ClearFilterButton = 0,
    SaveButton = 1,
    CloseButton = 2,
    AddButton = 3,
    UpdateButton = 4,
    ClearEntryButton = 5,
    SearchButton = 6,
  };
  // Indexes of mDtpActivity.
  enum DatePickers { FromDate = 0, ToDate = 1, EntryDate = 2 };
  // Indexes of mLblActivity: captions, and the two labels that show the account.
  enum Labels {
    ARTypeCaption = 0,
    ARTypeLabel = 1,
    ARNumberCaption = 2,
    ARNumberLabel = 3,
    FromDateCaption = 4,
    ToDateCaption = 5,
    FilterCodeCaption = 6,
    EntryDateCaption = 7,
    EntryCodeCaption = 8,
    CommentCaption = 9,
  };

  explicit QORVA_Activity(platform::Services& services, QObject* parent = nullptr);
  ~QORVA_Activity() override;

  // The caption follows the account (ARType, ARNumber).
  QString caption() const override { return m_caption; }

  // --- what the opener hands over and reads back ----------------------------------------------------------
  // The account type; sets the caption ("Account Activity for Installment # <number>" for "P", otherwise
  // "Account Activity for <REFDOCTYP description> <number>").
  QString ARType() const { return m_arType; }
  void setARType(const QString& type);
  // The account number with its check digit as its last character; sets the caption the second way.
  QString ARNumber() const { return m_arNumber; }
  void setARNumber(const QString& number);
  // The rows of the reply's "ACCOUNTACTIVITY" section, bound to the list newest first. `requestId` is the
  // request the reply answers (empty: any).
  void LoadActivity(const messaging::Reply& reply, const QString& requestId = {});
  // Rows added or changed on an earlier visit to the log and not saved yet (a changedRows() of then): each
  // takes the place of the host's row of its sequence number, or is added, with its ACTION mark, so that the
  // officer sees them again and they go back with the next save. Call after LoadActivity.
  void keepChanges(const messaging::RecordSet& earlier);
  // The officer's answer to the save question (Close), or whether rows were changed (Save).
  bool SaveChange() const { return m_saveChange; }
  void setSaveChange(bool saveChange) { m_saveChange = saveChange; }
  // Every row of the log, in the list's order, ACTION marking the changed ones. Null before any rows
  // were bound.
  messaging::RecordSetPtr ActivityRows() const { return Adodc1.recordset(); }
  // A copy of the rows added (ACTION "ADD") or changed ("UPD") here, newest first, on its first row: what
  // the opener sends with its save. Empty when nothing changed.
  messaging::RecordSet changedRows() const;
  // Whether the officer may change other officers' rows (the right "QORVA_ActvityUpdate", read on activation).
  bool mayUpdateOthersRows() const { return m_updateRight; }

  // --- procedures ----------------------------------------------------------------------------------------
  void Form_Load();
  void Form_Activate();
  void mSdgActivity_RowLoaded(messaging::Bookmark bookmark);
  void mSdgActivity_SelChange();
  void mCmdActivity_Click(int index);
  // The entry's messages, each beginning with a blank and followed by CR LF; empty when the entry passes.
  // The duplicate test runs only when `adding`.
  QString CheckEdits(bool adding);
  // Whether the log already holds a row of the entry's date, code and comment by the signed-on officer.
  bool CheckDuplicateRow();
  // Each answers whether it ran to its end: false when the entry failed its checks (the messages were
  // shown) or the step failed.
  bool AddRow();
  bool UpdateRow();
  void FilterActivityGrid();
  void ClearEntryFields();
  void ClearFilterFields();
  // Whether any row carries an ACTION. Clears the list's filter, as it always has.
  bool DataChanged();
  // Whether a code and comment are entered and not yet added or applied to the chosen row; shows
  // "Duplicate entry exists" when the log already holds them.
  bool CheckPendingEdit();
  void DefaultFieldColor();

  // --- controls ------------------------------------------------------------------------------------------
  platform::ControlArray<platform::Label> mLblActivity{QStringLiteral("mLblActivity")};
  platform::Frame mFraAddUpdate{QStringLiteral("mFraAddUpdate"), QStringLiteral("Add/Update Account Activity Row")};
  platform::Frame mFraFilter{QStringLiteral("mFraFilter"), QStringLiteral("Filter Grid By")};
  platform::ControlArray<platform::QORVA_DTP> mDtpActivity{QStringLiteral("mDtpActivity")};
  // The entry's code (code table "COLLECTN-USER") and the filter's code (code table "COLLECTN").
  platform::QORVA_CodesCombo mFtcboActivityCode{QStringLiteral("mFtcboActivityCode")};
  platform::QORVA_CodesCombo mFtcboFilterCode{QStringLiteral("mFtcboFilterCode")};
  platform::TextBox mTxtComment{QStringLiteral("mTxtComment")};
  platform::ControlArray<platform::Button> mCmdActivity{QStringLiteral("mCmdActivity")};
  platform::Adodc Adodc1{QStringLiteral("Adodc1")};
  platform::Grid mSdgActivity{QStringLiteral("mSdgActivity")};

Q_SIGNALS:
  void captionChanged(const QString& caption);

private:
  void loaded() override { Form_Load(); }
  void activated() override { Form_Activate(); }
  void layOutGrid();
  void showCaption(bool installment);
  void closeScreen();
  // The bound rows; an empty "ACCOUNTACTIVITY" set until LoadActivity.
  messaging::RecordSet& rows() const;
  // The row chosen in the list, or kNoBookmark.
  messaging::Bookmark chosenRow() const;
  QString valueOf(messaging::Bookmark row, const QString& field) const;
  // Whether the entry's date, code or comment differs from the row's.
  bool entryDiffersFrom(messaging::Bookmark row) const;
  // Writes the entry and the account into the row, as an added row has them.
  void writeEntry(messaging::Bookmark row);
  // Runs CheckEdits; a refused entry is shown and ends the calling procedure (the failed-check error).
  void checkEntry(bool adding);
  void resortAndRefresh();
  void checkPendingEditUnlessFilling();

  QString m_caption = kCaption;
  QString m_arType;
  QString m_arNumber;
  bool m_saveChange = false;
  bool m_updateRight = false;
  // Whether keepChanges brought rows of an earlier visit: there is something to hand back from the start.
  bool m_keptChanges = false;
  // Set while the screen fills the entry itself, so that its own filling is not taken for an edit.
  bool m_filling = false;
  // Where RowLoaded reads and writes, found once when the columns are laid out: it runs for every row shown.
  struct RowLoadedColumns {
    int code = -1;
    int officer = -1;
    int officerName = -1;
    int description = -1;
    int name = -1;
  } m_rowLoadedColumns;
};

}  // namespace adjustacc::activity
