#pragma once
// The JSON form of requests and replies on the host link (in process, and over HTTP).
//
//   Request {"replyTo","version","code","user","requestId",
//            "params":[{"system","key","op","value"}],
//            "records":{"NAME":[{"FIELD":"text" or null}]}}
//   Reply   {"replyTo","requestId","error":"" or text,
//            "sections":{"NAME":{"fields":["FIELD",...],"rows":[["text" or null,...],...]}}}
//
// Encoding keeps every order that matters: parameters, record-set names, records, and the fields of a
// record in the order they were set. Decoding is strict: every member must be present, of its type, and
// appear once; no other members are accepted; a row has exactly one value per field; field names are
// unique within a section (compared case-insensitively, as record sets look them up); and the size
// bounds below hold. Field types are not sent: a decoded section takes them from the catalogue
// (sections.h) by field name, and fields the catalogue does not know are text.

#include "reply.h"
#include "request.h"
#include "result.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace adjustacc::messaging {

// Bounds that decoding enforces, so that a broken or hostile peer cannot exhaust memory.
namespace jsonlimits {
inline constexpr qsizetype kMaxReplyBytes = 64 * 1024 * 1024;  // one reply document
inline constexpr qsizetype kMaxRequestBytes = 4 * 1024 * 1024;  // one request document
inline constexpr qsizetype kMaxValueChars = 64 * 1024;          // one text value (UTF-16 units)
inline constexpr qsizetype kMaxNameChars = 128;                 // a section, field or record-set name
inline constexpr qsizetype kMaxSections = 64;                   // sections in one reply
inline constexpr qsizetype kMaxFieldsPerSection = 512;
inline constexpr qsizetype kMaxRowsPerReply = 1'000'000;         // rows in all sections of one reply
inline constexpr qsizetype kMaxCellsPerReply = 4'000'000;       // values in all rows of one reply
inline constexpr qsizetype kMaxParams = 256;                    // parameters in one request
inline constexpr qsizetype kMaxRecordLists = 64;                // record-set names in one request
inline constexpr qsizetype kMaxRecordsPerRequest = 20'000;      // records in all sets of one request
inline constexpr qsizetype kMaxFieldsPerRecord = 256;
}  // namespace jsonlimits

QByteArray encodeRequest(const Request& request);
// The request, or an error text that says what is wrong and where (byte offset).
Result<Request> decodeRequest(QByteArrayView json);

// Sections are written with the rows each record set shows (its filter and sort applied).
// The time-out flag is not sent: it is made on the receiving side.
QByteArray encodeReply(const Reply& reply);
// The reply, or a failing reply whose error text says what could not be read. A failing reply cannot
// know whom it answers, so it carries the given reply-to name and request id: a link passes those of the
// request it sent, so that a reply it cannot read still reaches the waiting request message.
Reply decodeReply(QByteArrayView json, const QString& replyTo = {}, const QString& requestId = {});

}  // namespace adjustacc::messaging
