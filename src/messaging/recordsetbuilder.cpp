#include "recordsetbuilder.h"

#include "sections.h"

#include <QLoggingCategory>

namespace adjustacc::messaging {

namespace {

Q_LOGGING_CATEGORY(lcBuilder, "adjustacc.messaging.builder")

QString sectionNameOf(const QString& layoutName, const SectionLayout* layout) {
  return layout ? layout->section : layoutName;
}

// The fields the built set should have: the section's own, typed by the catalogue, then the layout's
// missing ones.
QList<Field> targetFields(const RecordSet& section, const SectionLayout* layout) {
  QList<Field> fields;
  fields.reserve(section.fieldCount() + (layout ? layout->fields.size() : 0));
  for (const Field& field : section.fields()) {
    FieldType type = FieldType::Text;
    if (const int index = layout ? layout->fieldIndex(field.name) : -1; index >= 0)
      type = layout->fields[index].type;
    else
      type = sections::fieldType(field.name).value_or(FieldType::Text);
    fields.append(Field{field.name, type});
  }
  if (layout) {
    for (const Field& field : layout->fields) {
      if (!section.hasField(field.name))
        fields.append(field);
    }
  }
  return fields;
}

}  // namespace

RecordSetPtr RecordSetBuilder::empty(const QString& layoutName) {
  const SectionLayout* layout = sections::layout(layoutName);
  if (!layout) {
    qCWarning(lcBuilder) << "no section layout named" << layoutName << "- the record set has no fields";
    return std::make_shared<RecordSet>(QList<Field>());
  }
  return std::make_shared<RecordSet>(layout->fields);
}

RecordSetPtr RecordSetBuilder::build(const Reply& reply, const QString& layoutName, const QString& requestId) {
  const SectionLayout* layout = sections::layout(layoutName);
  if (!reply.ok()) {
    qCWarning(lcBuilder) << "section" << layoutName << "asked of a failed reply:" << reply.error;
    return empty(layoutName);
  }
  if (!requestId.isEmpty() && reply.requestId != requestId) {
    qCWarning(lcBuilder) << "section" << layoutName << "asked for request" << requestId << "of the reply to"
                         << reply.requestId;
    return empty(layoutName);
  }
  const RecordSet* section = reply.section(sectionNameOf(layoutName, layout));
  if (!section)
    return empty(layoutName);

  const QList<Field> fields = targetFields(*section, layout);
  if (fields == section->fields()) {
    // The usual case: the host sent the whole layout, typed by the decoder. Share the rows.
    auto shared = std::make_shared<RecordSet>(*section);
    shared->moveFirst();
    return shared;
  }

  // Retype or widen: copy the rows the section shows into a set with the target fields.
  auto built = std::make_shared<RecordSet>(fields);
  const int rows = section->isOpen() ? section->recordCount() : 0;
  const int own = section->fieldCount();
  built->reserve(rows);
  QList<QVariant> values;
  values.reserve(own);
  for (int row = 0; row < rows; ++row) {
    values.resize(0);
    for (int field = 0; field < own; ++field)
      values.append(section->valueAt(row, field));
    built->addNew(values);
  }
  built->moveFirst();
  return built;
}

}  // namespace adjustacc::messaging
