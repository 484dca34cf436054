#include "activity.h"

#include "messaging/protocolwords.h"
#include "messaging/recordsetbuilder.h"
#include "platform/clock.h"
#include "platform/codelookup.h"
#include "platform/codetablesource.h"
#include "platform/datetimes.h"
#include "platform/errortrap.h"
#include "platform/fieldmarking.h"
#include "platform/modmessagetitle.h"
#include "platform/services.h"
#include "platform/statusbar.h"
#include "platform/ui.h"
#include "platform/user.h"
#include "screencore/codetablequerytext.h"
#include "screencore/listpreparation.h"
#include "screencore/procedure.h"

#include <QScopedValueRollback>
#include <QStringList>

#include <initializer_list>
#include <utility>

namespace adjustacc::activity {

using messaging::Bookmark;
using messaging::kNoBookmark;
using platform::AppError;
using platform::raise;
using platform::trap;
namespace title = platform::modMessageTitle;

namespace {

const QString kSection = QStringLiteral("ACCOUNTACTIVITY");
// The two checks report under the names the agency's support staff know them by, not under this screen's.
const QString kCheckEditsSource = QStringLiteral("QORVA_AcctAct.CheckEdits");
const QString kCheckDuplicateRowSource = QStringLiteral("QORVA_AcctAct.CheckDuplicateRow");

const QString kLineBreak = QStringLiteral("\r\n");
const QString kShortDate = QStringLiteral("Short Date");
const QString kAdd = QStringLiteral("ADD");
const QString kUpd = QStringLiteral("UPD");
const QString kSystem = QStringLiteral("SYSTEM");

const QString kAction = QStringLiteral("ACTION");
const QString kDateField = QStringLiteral("ACTVTY_DT");
const QString kCodeField = QStringLiteral("ACCT_ACTVTY_CD");
const QString kCommentField = QStringLiteral("ACTVTY_CMMT_TXT");
const QString kOfficerField = QStringLiteral("LST_UPDT_USER_ID");
const QString kOfficerNameField = QStringLiteral("LST_UPDT_USER_NM");
const QString kInfoField = QStringLiteral("ADTL_INFO_TXT");
const QString kDescriptionColumn = QStringLiteral("Description");
const QString kNameColumn = QStringLiteral("Name");

struct ColumnProps {
  const char16_t* name;  // the field for a bound column
  const char16_t* caption;
  bool bound;
  platform::GridColumn::Display display;
  bool visible;
};

constexpr auto Text = platform::GridColumn::Display::Text;
constexpr auto Money = platform::GridColumn::Display::Currency;

const ColumnProps kColumns[] = {
    {u"ACTVTY_DT", u"Date", true, Text, true},
    {u"ACTVTY_TM", u"Time", true, Text, true},
    {u"ACCT_ACTVTY_CD", u"Code", true, Text, true},
    {u"Description", u"Description", false, Text, true},
    {u"ACTVTY_AMT", u"Activity Amount", true, Money, true},
    {u"ACTVTY_BAL_AMT", u"Balance", true, Money, true},
    {u"LST_UPDT_USER_ID", u"RACF ID", true, Text, true},
    {u"Name", u"Name", false, Text, true},
    {u"ACTVTY_CMMT_TXT", u"Comment", true, Text, true},
    // What the row is to the save and to the rights; carried, not shown.
    {u"ACTION", u"ACTION", true, Text, false},
    {u"ADTL_INFO_TXT", u"ADTL_INFO_TXT", true, Text, false},
    {u"LST_UPDT_USER_NM", u"LST_UPDT_USER_NM", true, Text, false},
};

// A text value inside a filter text: between single quotes, a quote inside written twice.
QString quoted(const QString& text) {
  QString inner = text;
  inner.replace(u'\'', QStringLiteral("''"));
  return u'\'' + inner + u'\'';
}

// Redraw off for the length of a step, on again however the step ends.
class RedrawOff {
public:
  explicit RedrawOff(platform::Grid& grid) : m_grid(grid) { m_grid.setRedraw(false); }
  ~RedrawOff() { m_grid.setRedraw(true); }
  RedrawOff(const RedrawOff&) = delete;
  RedrawOff& operator=(const RedrawOff&) = delete;

private:
  platform::Grid& m_grid;
};

}  // namespace

QORVA_Activity::QORVA_Activity(platform::Services& services, QObject* parent)
    : ModalScreen(services, kFormName, kCaption, parent) {
  const std::pair<Labels, QString> labels[] = {
      {ARTypeCaption, QStringLiteral("AR Type:")},     {ARTypeLabel, QString()},
      {ARNumberCaption, QStringLiteral("AR Number:")}, {ARNumberLabel, QString()},
      {FromDateCaption, QStringLiteral("From Date")},  {ToDateCaption, QStringLiteral("To Date")},
      {FilterCodeCaption, QStringLiteral("Code")},     {EntryDateCaption, QStringLiteral("Date")},
      {EntryCodeCaption, QStringLiteral("Code")},      {CommentCaption, QStringLiteral("Comment")},
  };
  for (const auto& [index, caption] : labels) {
    mLblActivity.add(index, caption);
  }

  for (const int index : {FromDate, ToDate, EntryDate}) {
    mDtpActivity.add(index);
  }
  mFtcboActivityCode.setSource(&services.codeTables);
  mFtcboActivityCode.setCodeTable(QStringLiteral("COLLECTN-USER"));
  mFtcboFilterCode.setSource(&services.codeTables);
  mFtcboFilterCode.setCodeTable(QStringLiteral("COLLECTN"));
  // As long as the host keeps it.
  mTxtComment.setMaxLength(messaging::limits::CommentLength);

  const std::pair<Buttons, QString> buttons[] = {
      {ClearFilterButton, QStringLiteral("Clear")}, {SaveButton, QStringLiteral("Save")},
      {CloseButton, QStringLiteral("Close")},       {AddButton, QStringLiteral("Add")},
      {UpdateButton, QStringLiteral("Update")},     {ClearEntryButton, QStringLiteral("Clear")},
      {SearchButton, QStringLiteral("Search")},
  };
  for (const auto& [index, caption] : buttons) {
    mCmdActivity.add(index, caption);
  }
  mCmdActivity.forEach([this](int index, platform::Button& button) {
    connect(&button, &platform::Button::clicked, this, [this, index] { mCmdActivity_Click(index); });
  });

  for (platform::Control* control : std::initializer_list<platform::Control*>{
           &mLblActivity[EntryDateCaption], &mDtpActivity[EntryDate], &mLblActivity[EntryCodeCaption],
           &mFtcboActivityCode, &mLblActivity[CommentCaption], &mTxtComment, &mCmdActivity[AddButton],
           &mCmdActivity[UpdateButton], &mCmdActivity[ClearEntryButton]}) {
    mFraAddUpdate.add(*control);
  }
  for (platform::Control* control : std::initializer_list<platform::Control*>{
           &mLblActivity[FromDateCaption], &mDtpActivity[FromDate], &mLblActivity[ToDateCaption], &mDtpActivity[ToDate],
           &mLblActivity[FilterCodeCaption], &mFtcboFilterCode, &mCmdActivity[ClearFilterButton],
           &mCmdActivity[SearchButton]}) {
    mFraFilter.add(*control);
  }

  layOutGrid();
  Adodc1.setRecordset(messaging::RecordSetBuilder::empty(kSection));

  connect(&mSdgActivity, &platform::Grid::selChange, this, &QORVA_Activity::mSdgActivity_SelChange);
  connect(&mDtpActivity[EntryDate], &platform::DatePicker::valueChanged, this,
          &QORVA_Activity::checkPendingEditUnlessFilling);
  connect(&mFtcboActivityCode, &platform::CodesCombo::textChanged, this,
          &QORVA_Activity::checkPendingEditUnlessFilling);
  connect(&mTxtComment, &platform::TextBox::textChanged, this, &QORVA_Activity::checkPendingEditUnlessFilling);

  // Keyboard order: the entry, its buttons, the list, the filter, then Save and Close.
  int order = 0;
  for (platform::Control* control : std::initializer_list<platform::Control*>{
           &mDtpActivity[EntryDate], &mFtcboActivityCode, &mTxtComment, &mCmdActivity[AddButton],
           &mCmdActivity[UpdateButton], &mCmdActivity[ClearEntryButton], &mSdgActivity, &mDtpActivity[FromDate],
           &mDtpActivity[ToDate], &mFtcboFilterCode, &mCmdActivity[ClearFilterButton], &mCmdActivity[SearchButton],
           &mCmdActivity[SaveButton], &mCmdActivity[CloseButton]}) {
    control->setTabIndex(order++);
  }
}

QORVA_Activity::~QORVA_Activity() = default;

void QORVA_Activity::layOutGrid() {
  for (const ColumnProps& props : kColumns) {
    const QString name = QString::fromUtf16(props.name);
    platform::GridColumn& column =
        mSdgActivity.addColumn(name, QString::fromUtf16(props.caption), props.bound ? name : QString());
    column.setDisplay(props.display);
    column.setVisible(props.visible);
    column.setLocked(true);
  }
  m_rowLoadedColumns = {mSdgActivity.columnIndex(kCodeField), mSdgActivity.columnIndex(kOfficerField),
                        mSdgActivity.columnIndex(kOfficerNameField), mSdgActivity.columnIndex(kDescriptionColumn),
                        mSdgActivity.columnIndex(kNameColumn)};
  mSdgActivity.setDataSource(&Adodc1);
  mSdgActivity.setRowLoadedHandler([this](Bookmark bookmark) { mSdgActivity_RowLoaded(bookmark); });
}

// --- what the opener hands over and reads back ---------------------------------------------------------------

void QORVA_Activity::setARType(const QString& type) {
  trap(m_services, source("ARType"), [&] {
    m_arType = type;
    mLblActivity[ARTypeLabel].setCaption(type);
    showCaption(type.trimmed() == u"P");
  });
}

void QORVA_Activity::setARNumber(const QString& number) {
  trap(m_services, source("ARNumber"), [&] {
    m_arNumber = number;
    mLblActivity[ARNumberLabel].setCaption(number);
    showCaption(false);
  });
}

void QORVA_Activity::showCaption(bool installment) {
  m_caption = installment ? QStringLiteral("Account Activity for Installment # ") + m_arNumber
                          : QStringLiteral("Account Activity for ") +
                                m_services.codes.description(QStringLiteral("REFDOCTYP"), m_arType) + u' ' + m_arNumber;
  Q_EMIT captionChanged(m_caption);
}

void QORVA_Activity::LoadActivity(const messaging::Reply& reply, const QString& requestId) {
  trap(m_services, source("LoadActivity"), [&] {
    const messaging::RecordSetPtr activity = messaging::RecordSetBuilder::build(reply, kSection, requestId);
    if (activity->recordCount() > 0) {
      screencore::failOn(activity->setSort(kActivitySort), QStringLiteral("Sort"));
      activity->moveFirst();
    }
    Adodc1.setRecordset(activity);
  });
}

void QORVA_Activity::keepChanges(const messaging::RecordSet& earlier) {
  trap(m_services, source("keepChanges"), [&] {
    messaging::RecordSet& set = rows();
    const QString sequenceField = QStringLiteral("ACTVTY_SEQ_NBR");
    const auto hostRow = [&](const QString& sequence) {
      for (int row = 0; !sequence.isEmpty() && row < set.recordCount(); ++row) {
        if (set.valueAt(row, sequenceField).toString().trimmed() == sequence) {
          return set.bookmarkAt(row);
        }
      }
      return kNoBookmark;
    };
    int kept = 0;
    for (int row = 0; row < earlier.recordCount(); ++row) {
      const QString action = earlier.valueAt(row, kAction).toString().trimmed().toUpper();
      if (action != kAdd && action != kUpd) {
        continue;
      }
      Bookmark target = action == kUpd ? hostRow(earlier.valueAt(row, sequenceField).toString().trimmed()) : kNoBookmark;
      if (target == kNoBookmark) {
        target = set.addNew();
      }
      for (const messaging::Field& field : set.fields()) {
        const int from = earlier.fieldIndex(field.name);
        if (from < 0 || earlier.isNullAt(row, from)) {
          continue;
        }
        if (!set.updateAt(target, set.fieldIndex(field.name), earlier.valueAt(row, from))) {
          platform::fail(QStringLiteral("The activity row could not take its %1 again.").arg(field.name));
        }
      }
      ++kept;
    }
    if (kept > 0) {
      m_keptChanges = true;
      resortAndRefresh();
    }
  });
}

messaging::RecordSet QORVA_Activity::changedRows() const {
  // The copy's filter is its own (in the list's order); the list keeps its filter and position.
  messaging::RecordSet changed = Adodc1.recordset() ? *Adodc1.recordset() : messaging::RecordSet();
  if (changed.setFilter(QStringLiteral("ACTION <> Null"))) {
    // Rows without an ACTION field were never marked.
    return *messaging::RecordSetBuilder::empty(kSection);
  }
  changed.moveFirst();
  return changed;
}

messaging::RecordSet& QORVA_Activity::rows() const {
  if (!Adodc1.recordset()) {
    platform::fail(QStringLiteral("The account activity list has no rows to work on."));
  }
  return *Adodc1.recordset();
}

// --- load and activation -----------------------------------------------------------------------------------------

void QORVA_Activity::Form_Load() {
  trap(m_services, source("Form_Load"), [&] {
    const QScopedValueRollback filling(m_filling, true);
    const QDate today = m_services.clock.today();
    for (const int index : {FromDate, ToDate, EntryDate}) {
      mDtpActivity[index].setMinDate(kFirstActivityDate);
      mDtpActivity[index].setDisplayFormat(kShortDate);
    }
    // From the first day of the log, so that the whole log shows.
    mDtpActivity[FromDate].setDate(kFirstActivityDate);
    mDtpActivity[ToDate].setDate(today);
    mDtpActivity[EntryDate].setDate(today);
    screencore::prepareList(mSdgActivity);
    mSdgActivity.setSelectionMode(platform::Grid::SelectionMode::Single);
    // Nothing to hand back until a row is added or changed, here or on an earlier visit.
    mCmdActivity[SaveButton].setEnabled(m_keptChanges);
    const QString region = m_services.user.region();
    screencore::valueOrFail(
        mFtcboActivityCode.fill(screencore::codeTableQueryText(region, mFtcboActivityCode.codeTable(), today)));
    screencore::valueOrFail(
        mFtcboFilterCode.fill(screencore::codeTableQueryText(region, mFtcboFilterCode.codeTable(), today)));
  });
}

void QORVA_Activity::Form_Activate() {
  trap(m_services, source("Form_Activate"), [&] {
    FilterActivityGrid();
    m_updateRight = m_services.user.hasRight(platform::rights::ActivityUpdate);
    m_services.ui.setPointer(platform::Pointer::Default);
  });
}

// --- the list ------------------------------------------------------------------------------------------------------

void QORVA_Activity::mSdgActivity_RowLoaded(Bookmark) {
  static const QString kRowLoaded = source("mSdgActivity_RowLoaded");
  trap(m_services, kRowLoaded, [&] {
    const RowLoadedColumns& at = m_rowLoadedColumns;
    static const QString kCollectn = QStringLiteral("COLLECTN");
    const QString code = mSdgActivity.column(at.code).text().trimmed();
    mSdgActivity.column(at.description).setValue(m_services.codes.description(kCollectn, code));
    // The signed-on officer's name comes from the sign-on; another officer's with the row from the host. A row
    // the system made, or one by an officer the host no longer knows, shows the id it was written under.
    const QString officer = mSdgActivity.column(at.officer).text().trimmed();
    const bool signedOn = !officer.isEmpty() && officer.compare(m_services.user.officerId(), Qt::CaseInsensitive) == 0;
    const QString name = signedOn ? m_services.user.name() : mSdgActivity.column(at.officerName).text().trimmed();
    mSdgActivity.column(at.name).setValue(name.isEmpty() ? officer : name);
  });
}

Bookmark QORVA_Activity::chosenRow() const {
  const QList<Bookmark> selected = mSdgActivity.selectedBookmarks();
  if (selected.size() != 1 || !Adodc1.recordset() || Adodc1.recordset()->rowOfBookmark(selected.first()) < 0) {
    return kNoBookmark;
  }
  return selected.first();
}

QString QORVA_Activity::valueOf(Bookmark row, const QString& field) const {
  const messaging::RecordSet& set = rows();
  return set.valueAt(set.rowOfBookmark(row), field).toString();
}

void QORVA_Activity::mSdgActivity_SelChange() {
  trap(m_services, source("mSdgActivity_SelChange"), [&] {
    const Bookmark row = chosenRow();
    if (row == kNoBookmark) {
      raise(AppError::LeaveEarly);
    }
    {
      const QScopedValueRollback filling(m_filling, true);
      if (const auto day = platform::parseAnyDate(valueOf(row, kDateField).trimmed())) {
        mDtpActivity[EntryDate].setDate(day.value());
      }
      mFtcboActivityCode.setCode(valueOf(row, kCodeField).trimmed());
      mTxtComment.setText(valueOf(row, kCommentField));
    }
    // Only a row added here may take another code.
    mFtcboActivityCode.setLocked(valueOf(row, kAction).trimmed().toUpper() != kAdd);
    bool mayUpdate = false;
    if (valueOf(row, kInfoField).trimmed().toUpper() != kSystem) {
      const bool own =
          valueOf(row, kOfficerField).trimmed().compare(m_services.user.officerId(), Qt::CaseInsensitive) == 0;
      mayUpdate = own || m_updateRight;
    }
    mCmdActivity[UpdateButton].setEnabled(mayUpdate);
    mFraAddUpdate.setEnabled(mayUpdate);
    mCmdActivity[AddButton].setEnabled(false);
  });
}

// --- the checks ----------------------------------------------------------------------------------------------------

void QORVA_Activity::DefaultFieldColor() {
  trap(m_services, source("DefaultFieldColor"), [&] {
    for (platform::Control* input :
         std::initializer_list<platform::Control*>{&mDtpActivity[EntryDate], &mFtcboActivityCode, &mTxtComment}) {
      m_services.fieldMarking.restore(*input);
    }
  });
}

QString QORVA_Activity::CheckEdits(bool adding) {
  QString errors;
  trap(m_services, kCheckEditsSource, [&] {
    DefaultFieldColor();
    const auto failed = [&](platform::Control* input, const QString& message) {
      errors += u' ' + message + kLineBreak;
      if (input) {
        m_services.fieldMarking.markError(*input);
      }
    };
    // Compared as "yyyymmdd" texts: an empty date is less than any day.
    const QString format = QStringLiteral("yyyyMMdd");
    platform::DatePicker& entryDate = mDtpActivity[EntryDate];
    const QString day = entryDate.isEmpty() ? QString() : entryDate.date().toString(format);
    if (day < kFirstActivityDate.toString(format)) {
      failed(&entryDate, QStringLiteral("Date can not be less than 1/27/1997"));
    }
    if (day > m_services.clock.today().toString(format)) {
      failed(&entryDate, QStringLiteral("Date can not be greater than current date"));
    }
    if (mFtcboActivityCode.selectedCode().isEmpty()) {
      failed(&mFtcboActivityCode, QStringLiteral("Code Description must be selected"));
    }
    if (mTxtComment.text().trimmed().isEmpty()) {
      failed(&mTxtComment, QStringLiteral("Comment must be entered."));
    }
    if (adding && CheckDuplicateRow()) {
      failed(nullptr, QStringLiteral("Can not add duplicate information"));
    }
  });
  return errors;
}

bool QORVA_Activity::CheckDuplicateRow() {
  // When the test cannot be made the entry counts as a duplicate, so that nothing is added unchecked.
  return platform::trapValue(m_services, kCheckDuplicateRowSource, true, [&] {
    const platform::DatePicker& entryDate = mDtpActivity[EntryDate];
    if (entryDate.isEmpty()) {
      return false;
    }
    // The test filters a copy of the rows (copies share their storage): the list keeps its filter, its
    // position and its drawing, which the test would otherwise have to put back.
    messaging::RecordSet probe = rows();
    const QString filter = QStringLiteral("ACTVTY_DT = #") + entryDate.date().toString(Qt::ISODate) +
                           QStringLiteral("# and ACCT_ACTVTY_CD = ") + quoted(mFtcboActivityCode.selectedCode()) +
                           QStringLiteral(" and LST_UPDT_USER_ID = ") + quoted(m_services.user.officerId()) +
                           QStringLiteral(" and ACTVTY_CMMT_TXT = ") + quoted(mTxtComment.text().trimmed());
    screencore::failOn(probe.setFilter(filter), QStringLiteral("Filter"));
    return probe.recordCount() != 0;
  });
}

bool QORVA_Activity::entryDiffersFrom(Bookmark row) const {
  const messaging::Result<QDate> rowDay = platform::parseAnyDate(valueOf(row, kDateField).trimmed());
  const QDate day = rowDay ? rowDay.value() : QDate();
  return day != mDtpActivity[EntryDate].date() ||
         valueOf(row, kCodeField).trimmed() != mFtcboActivityCode.selectedCode() ||
         valueOf(row, kCommentField).trimmed() != mTxtComment.text().trimmed();
}

bool QORVA_Activity::CheckPendingEdit() {
  return platform::trapValue(m_services, source("CheckPendingEdit"), false, [&] {
    if (mFtcboActivityCode.selectedCode().isEmpty() || mTxtComment.text().trimmed().isEmpty()) {
      return false;
    }
    if (const Bookmark row = chosenRow(); row != kNoBookmark && !entryDiffersFrom(row)) {
      return false;
    }
    if (CheckDuplicateRow()) {
      m_services.statusBar.setText(QStringLiteral("Duplicate entry exists"));
    }
    return true;
  });
}

void QORVA_Activity::checkPendingEditUnlessFilling() {
  if (!m_filling) {
    CheckPendingEdit();
  }
}

// --- adding and changing rows ----------------------------------------------------------------------------------

void QORVA_Activity::writeEntry(Bookmark row) {
  messaging::RecordSet& set = rows();
  const QString number = m_arNumber.trimmed();
  const std::pair<const char*, QString> values[] = {
      {"ACCT_CK_DGT_NBR", number.right(1)},
      {"ACCT_RCVBL_NBR", number.left(7)},
      {"ACCT_RCVBL_TYP_CD", m_arType},
      {"ACTVTY_DT", mDtpActivity[EntryDate].date().toString(Qt::ISODate)},
      {"ACCT_ACTVTY_CD", mFtcboActivityCode.selectedCode()},
      {"ACTVTY_CMMT_TXT", mTxtComment.text().trimmed()},
      {"LST_UPDT_USER_ID", m_services.user.officerId()},
  };
  for (const auto& [field, value] : values) {
    if (!set.updateAt(row, set.fieldIndex(QLatin1String(field)), value)) {
      platform::fail(QStringLiteral("The activity row could not take its %1.").arg(QLatin1String(field)));
    }
  }
}

void QORVA_Activity::checkEntry(bool adding) {
  if (const QString errors = CheckEdits(adding); !errors.isEmpty()) {
    m_services.statusBar.setText(title::ErrorsFound);
    m_services.ui.messageBox(errors, platform::MsgButtons::Ok, platform::MsgIcon::Exclamation, title::messageTitle());
    raise(AppError::ActivityCheckFailed, errors);
  }
}

void QORVA_Activity::resortAndRefresh() {
  screencore::failOn(rows().setSort(kActivitySort), QStringLiteral("Sort"));
  Adodc1.refresh();
}

bool QORVA_Activity::AddRow() {
  return trap(m_services, source("AddRow"), [&] {
           checkEntry(true);
           {
             const RedrawOff redrawOff(mSdgActivity);
             messaging::RecordSet& set = rows();
             const Bookmark row = set.addNew();
             writeEntry(row);
             set.updateAt(row, set.fieldIndex(kAction), kAdd);
             resortAndRefresh();
           }
           m_services.statusBar.setText(QStringLiteral("Account activity information was added to the active window."));
         }) == platform::TrapOutcome::Completed;
}

bool QORVA_Activity::UpdateRow() {
  return trap(m_services, source("UpdateRow"), [&] {
           checkEntry(false);
           const Bookmark row = chosenRow();
           if (row == kNoBookmark || !entryDiffersFrom(row)) {
             m_services.statusBar.setText(
                 QStringLiteral("Account activity information was not updated in the active window. Account activity "
                                "was not changed."));
             return;
           }
           {
             const RedrawOff redrawOff(mSdgActivity);
             // A row added here stays "ADD": the host has yet to see it at all.
             const bool untouched = valueOf(row, kAction).trimmed().isEmpty();
             writeEntry(row);
             if (untouched) {
               rows().updateAt(row, rows().fieldIndex(kAction), kUpd);
             }
             resortAndRefresh();
           }
           m_services.statusBar.setText(
               QStringLiteral("Account activity information was updated in the active window."));
         }) == platform::TrapOutcome::Completed;
}

bool QORVA_Activity::DataChanged() {
  return platform::trapValue(m_services, source("DataChanged"), false, [&] {
    messaging::RecordSet& set = rows();
    screencore::failOn(set.setFilter(QStringLiteral("Action <> null")), QStringLiteral("Filter"));
    const bool changed = set.recordCount() >= 1;
    screencore::failOn(set.setFilter(QString()), QStringLiteral("Filter"));
    Adodc1.refresh();
    return changed;
  });
}

// --- filter and entry fields ---------------------------------------------------------------------------------------

void QORVA_Activity::FilterActivityGrid() {
  trap(m_services, source("FilterActivityGrid"), [&] {
    messaging::RecordSet& set = rows();
    screencore::failOn(set.setFilter(QString()), QStringLiteral("Filter"));
    QStringList parts;
    if (const QString code = mFtcboFilterCode.selectedCode(); !code.isEmpty()) {
      parts.append(QStringLiteral("ACCT_ACTVTY_CD = ") + quoted(code));
    }
    const QString format = QStringLiteral("MM/dd/yyyy");
    if (!mDtpActivity[FromDate].isEmpty()) {
      parts.append(QStringLiteral("ACTVTY_DT >= #") + mDtpActivity[FromDate].date().toString(format) + u'#');
    }
    if (!mDtpActivity[ToDate].isEmpty()) {
      // Two blanks before the "#", as the filter has always been written.
      parts.append(QStringLiteral("ACTVTY_DT <=  #") + mDtpActivity[ToDate].date().toString(format) + u'#');
    }
    if (!parts.isEmpty()) {
      screencore::failOn(set.setFilter(parts.join(QStringLiteral(" and "))), QStringLiteral("Filter"));
    }
    Adodc1.refresh();
  });
}

void QORVA_Activity::ClearEntryFields() {
  trap(m_services, source("ClearEntryFields"), [&] {
    const QScopedValueRollback filling(m_filling, true);
    mDtpActivity[EntryDate].setDisplayFormat(kShortDate);
    mDtpActivity[EntryDate].setDate(m_services.clock.today());
    mFtcboActivityCode.setLocked(false);
    mFtcboActivityCode.clear();
    mTxtComment.setText(QString());
    // No row is chosen any more, so Add is right again and Update has nothing to change.
    mSdgActivity.clearSelection();
    mFraAddUpdate.setEnabled(true);
    for (const int index : {AddButton, UpdateButton, ClearEntryButton}) {
      mCmdActivity[index].setEnabled(true);
    }
  });
}

void QORVA_Activity::ClearFilterFields() {
  trap(m_services, source("ClearFilterFields"), [&] {
    mDtpActivity[FromDate].clear();
    mDtpActivity[ToDate].clear();
    mFtcboFilterCode.clear();
  });
}

// --- buttons ---------------------------------------------------------------------------------------------------

void QORVA_Activity::mCmdActivity_Click(int index) {
  trap(m_services, source("mCmdActivity_Click"), [&] {
    switch (index) {
      case ClearFilterButton:
        ClearFilterFields();
        break;
      case SaveButton:
        m_saveChange = DataChanged();
        setVisible(false);
        break;
      case CloseButton:
        closeScreen();
        break;
      case AddButton:
      case UpdateButton: {
        // A refused entry leaves the rows, and the filter the officer set, as they were.
        if (!(index == AddButton ? AddRow() : UpdateRow())) {
          raise(AppError::LeaveEarly);
        }
        ClearFilterFields();
        if (DataChanged()) {
          mCmdActivity[SaveButton].setEnabled(true);
        }
        break;
      }
      case ClearEntryButton:
        ClearEntryFields();
        break;
      case SearchButton: {
        const platform::DatePicker& from = mDtpActivity[FromDate];
        const platform::DatePicker& to = mDtpActivity[ToDate];
        if (!from.isEmpty() && !to.isEmpty() && from.date() > to.date()) {
          m_services.ui.messageBox(QStringLiteral("From Date must be less than or equal to To Date"),
                                   platform::MsgButtons::Ok, platform::MsgIcon::Exclamation, title::messageTitle());
          raise(AppError::LeaveEarly);
        }
        ClearEntryFields();
        FilterActivityGrid();
        break;
      }
      default:
        break;
    }
  });
}

void QORVA_Activity::closeScreen() {
  if (DataChanged()) {
    switch (m_services.ui.messageBox(
        QStringLiteral("Information on the active window has changed. Would you like to save your changes?"),
        platform::MsgButtons::YesNoCancel, platform::MsgIcon::Question, title::messageTitle())) {
      case platform::MsgAnswer::Yes:
        m_saveChange = true;
        setVisible(false);
        return;
      case platform::MsgAnswer::No:
        m_saveChange = false;
        break;
      default:
        raise(AppError::LeaveEarly);
    }
  }
  unload();
}

}  // namespace adjustacc::activity
