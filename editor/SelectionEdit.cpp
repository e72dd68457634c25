#include "editor/SelectionEdit.h"

#include "frame/CommonFunctions.h"
#include "frame/ScratchTable.h"
#include "frame/Vocabulary.h"

#include <algorithm>

namespace orvo::editor {

bool SelectedRecords::areSeveral() const {
    return rows.size() > 1 && std::any_of(rows.begin(), rows.end(), [this](const One& one) {
               return sameText(one.key, current);
           });
}

const RecordField* SelectionEdit::editedField(const RecordFields& fields,
                                              const QString& passportRow) {
    for (const RecordField& field : fields)
        if (field.isEditable() && sameText(passportRow, QString::fromLatin1(field.passport.row)))
            return &field;
    return nullptr;
}

void SelectionEdit::type(const SelectedRecords& selected, const QString& passportRow, bool begins) {
    if (begins) {
        m_key = selected.current;
        m_typed.clear();
        m_also.clear();
        if (selected.areSeveral())
            for (const SelectedRecords::One& one : selected.rows)
                if (!sameText(one.key, m_key))
                    m_also.emplace_back(one.key, one.kind);
    }
    Q_ASSERT(m_also.empty() || // 1
             (!m_key.isEmpty() &&
              std::none_of(m_also.begin(), m_also.end(),
                           [&](const auto& other) { return sameText(other.first, m_key); })));
    const RecordField* field = editedField(*selected.fields, passportRow);
    if (field && !m_singular.contains(passportRow, Qt::CaseInsensitive) &&
        std::find(m_typed.begin(), m_typed.end(), field) == m_typed.end())
        m_typed.push_back(field);
}

void SelectionEdit::write(ScratchTable& out, const QString& key, const QModelIndex& row) {
    if (sameText(key, m_key) && !m_typed.empty())
        for (const auto& [other, kind] : m_also) {
            const Rows on = kind;
            if (std::none_of(m_typed.begin(), m_typed.end(),
                             [on](const RecordField* field) { return field->passport.on & on; }))
                continue;
            RowWriter record = out.add(MDX_UPDATE);
            record.text(field::KeyLink, other);
            for (const RecordField* field : m_typed)
                if (field->passport.on & on)
                    field->write(record, row.siblingAtColumn(field->column).data());
        }
    m_also.clear();
    m_typed.clear();
}

QSet<QString> SelectionEdit::mixed(const SelectedRecords& selected, bool isEditing) const {
    QSet<QString> rows;
    if (!selected.areSeveral())
        return rows;
    for (const RecordField& field : *selected.fields) {
        const QString name = QString::fromLatin1(field.passport.row).toLower();
        const bool isTyped =
            isEditing && std::find(m_typed.begin(), m_typed.end(), &field) != m_typed.end();
        if (!field.isEditable() || isTyped || m_singular.contains(name, Qt::CaseInsensitive))
            continue;
        const QModelIndex* first = nullptr;
        for (const SelectedRecords::One& one : selected.rows) {
            if ((field.passport.on & one.kind) == 0)
                continue;
            // No value and the empty one are shown alike.
            if (first && first->siblingAtColumn(field.column).data().toString() !=
                             one.row.siblingAtColumn(field.column).data().toString()) {
                rows.insert(name);
                break;
            }
            first = &one.row;
        }
    }
    return rows;
}

} // namespace orvo::editor
