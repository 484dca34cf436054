// Arbitrary bytes into the reply and request decoders. Besides not crashing, whatever decodes must come
// back unchanged through the encoder, and whatever fails must say why.

#include "messaging/jsoncodec.h"

#include <cstdint>
#include <cstdlib>

using namespace adjustacc::messaging;

namespace {

bool sameSection(const RecordSet& a, const RecordSet& b) {
  if (a.fields() != b.fields() || a.recordCount() != b.recordCount())
    return false;
  for (int row = 0; row < a.recordCount(); ++row) {
    for (int field = 0; field < a.fieldCount(); ++field) {
      if (a.isNullAt(row, field) != b.isNullAt(row, field) || a.valueAt(row, field) != b.valueAt(row, field))
        return false;
    }
  }
  return true;
}

void checkReply(QByteArrayView bytes) {
  const Reply reply = decodeReply(bytes);
  if (!reply.error.isEmpty() && reply.sections.isEmpty())
    return;  // refused (or a host error without sections): fine, it said why
  const Reply again = decodeReply(encodeReply(reply));
  if (again.error != reply.error || again.replyTo != reply.replyTo || again.requestId != reply.requestId ||
      again.sections.keys() != reply.sections.keys())
    std::abort();
  for (auto it = reply.sections.cbegin(); it != reply.sections.cend(); ++it) {
    if (!sameSection(it.value(), again.sections.value(it.key())))
      std::abort();
  }
}

void checkRequest(QByteArrayView bytes) {
  const Result<Request> request = decodeRequest(bytes);
  if (!request.ok()) {
    if (request.error().isEmpty())
      std::abort();
    return;
  }
  const Result<Request> again = decodeRequest(encodeRequest(request.value()));
  if (!again.ok() || !(again.value() == request.value()))
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const QByteArrayView bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
  checkReply(bytes);
  checkRequest(bytes);
  return 0;
}
