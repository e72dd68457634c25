#include "frame/TableText.h"

#include "frame/Records.h"

namespace orvo {
namespace {

/// One value on one line: what would break the columns is written as in a C string.
QString shown(const MDRData* record, MDRField field) {
    const MDRVar value = valueOf(record, field);
    if (value.null)
        return QStringLiteral("\\N");
    switch (value.type) {
    case MDX_BOOLEAN:
        return QString::number(flagOf(record, field) ? 1 : 0);
    case MDX_INTEGER:
        return QString::number(integerOf(record, field));
    case MDX_TEXT: {
        QString text = textOf(record, field);
        return text.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
            .replace(QLatin1Char('\t'), QLatin1String("\\t"))
            .replace(QLatin1Char('\n'), QLatin1String("\\n"));
    }
    default:
        return QStringLiteral("\\?");
    }
}

} // namespace

QString tableText(const CMDArray& table, const QStringList& fields) {
    QString text = fields.join(QLatin1Char('\t')) + QLatin1Char('\n');
    walkAll(table, 0, [&](const MDRData* record) {
        QStringList values;
        for (const QString& field : fields)
            values << shown(record, fieldOf(record, field.toLatin1().constData()));
        text += values.join(QLatin1Char('\t')) + QLatin1Char('\n');
        return true;
    });
    return text;
}

} // namespace orvo
