#include "detailscreens.h"

#include "messaging/requestmessage.h"

namespace adjustacc::document {

Q_LOGGING_CATEGORY(lcDocument, "adjustacc.document")

bool receivableMaySave(const QString& activityStatus, const QString& caseId, const QString& statusCode) {
  // Tested in this order; any one of them makes the receivable view-only.
  if (activityStatus == u"I") {
    return false;
  }
  if (!caseId.trimmed().isEmpty()) {
    return false;
  }
  if (statusCode.trimmed().toUpper() == u"V") {
    return false;
  }
  return true;
}

QString receiptReplyToName(const QString& applicationName, int instance) {
  return applicationName + QStringLiteral("PayDetail") + QString::number(instance);
}

DetailScreens::~DetailScreens() = default;

void NoDetailScreens::loadArDetail(const ArDetailOpening& opening) {
  qCInfo(lcDocument).noquote() << "AR Detail is not available yet; receivable" << opening.receivableNumber << "-"
                               << opening.checkNumber << (opening.saveEnabled ? "(may be saved)" : "(view only)");
}

void NoDetailScreens::showArDetail() {}

void NoDetailScreens::addAssessmentLine(int gridIndex, const QString& line) {
  qCDebug(lcDocument).noquote() << "assessment for grid" << gridIndex << ":" << QString(line).replace(u'\t', u'|');
}

void NoDetailScreens::openReceiptDetail(const ReceiptDetailOpening& opening,
                                        std::unique_ptr<messaging::RequestMessage> request) {
  qCInfo(lcDocument).noquote() << "Receipt Detail is not available yet; receipt" << opening.receiptNumber
                               << "requested as" << opening.replyTo;
  // Its reply, when it comes, has nobody to go to.
  request.reset();
}

}  // namespace adjustacc::document
