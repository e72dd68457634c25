#include "frame/RecordTextValidator.h"

#include "frame/Text.h"
#include "platform/mdx/MdxBuild.h"

#include <QCoreApplication>
#include <QLineEdit>
#include <QToolTip>

#include <algorithm>
#include <limits>

namespace orvo {

namespace {

bool holds(const QString& text) {
    const std::string bytes = mdx::toCp1251(text.toStdString());
    return bytes.find('\0') == std::string::npos &&
           QString::fromStdString(mdx::toUtf8(bytes)) == text;
}

QString shownLetter(uint code) {
    if (QChar::isPrint(code) && !QChar::isMark(code) && !QChar::isSpace(code))
        return QString::fromUcs4(&code, 1);
    return QStringLiteral("U+%1").arg(code, 4, 16, QLatin1Char('0')).toUpper();
}

/// Said once for all of a paste, which may be a whole page.
QString refusal(const QStringList& letters) {
    constexpr int shownAtMost = 10;
    QStringList shown;
    for (const QString& letter : letters.mid(0, shownAtMost))
        shown << Text::tr("«%1»").arg(letter);
    QString text = shown.join(QStringLiteral(", "));
    if (letters.size() > shownAtMost)
        text += Text::tr(" и ещё %1").arg(letters.size() - shownAtMost);
    return (letters.size() == 1 ? Text::tr("Не введено: знака %1 нет в кодировке Windows-1251.")
                                : Text::tr("Не введено: знаков %1 нет в кодировке Windows-1251."))
        .arg(text);
}

} // namespace

void RecordTextValidator::install(QLineEdit* field) {
    auto* validator = new RecordTextValidator(field);
    connect(validator, &RecordTextValidator::refused, field, [field](const QStringList& letters) {
        QToolTip::showText(field->mapToGlobal(field->rect().bottomLeft()), refusal(letters), field);
    });
    connect(validator, &RecordTextValidator::tooLong, field, [field] {
        QToolTip::showText(field->mapToGlobal(field->rect().bottomLeft()),
                           Text::tr("Не введено: больше %1 знаков поле не берёт.").arg(longest),
                           field);
    });
    // A line edit of itself cuts what it is filled with, and what is pasted, without a word.
    field->setMaxLength(std::numeric_limits<int>::max());
    field->setValidator(validator);
}

QStringList RecordTextValidator::missingLetters(const QString& text) {
    QStringList letters;
    if (holds(text))
        return letters;
    for (const uint code : text.toUcs4()) {
        const QString shown = shownLetter(code);
        if (!holds(QString::fromUcs4(&code, 1)) && !letters.contains(shown))
            letters << shown;
    }
    return letters;
}

QValidator::State RecordTextValidator::validate(QString& text, int& cursor) const {
    if (text.size() > longest) {
        emit tooLong();
        return Invalid;
    }
    if (holds(text))
        return Acceptable;
    const QString composed = text.normalized(QString::NormalizationForm_C);
    if (holds(composed)) {
        const QString before = text.left(cursor).normalized(QString::NormalizationForm_C);
        text = composed;
        cursor = std::min<int>(before.size(), text.size());
        return Acceptable;
    }
    emit refused(missingLetters(text));
    return Invalid;
}

} // namespace orvo
