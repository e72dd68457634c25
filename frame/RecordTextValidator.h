// RecordTextValidator.h: keeps letters out of a field that no record can hold. The host has it, for
// its own fields and for those of the modules.
#ifndef ORVO_FRAME_RECORDTEXTVALIDATOR_H
#define ORVO_FRAME_RECORDTEXTVALIDATOR_H

#include "frame/OrvoClient.h"

#include <QStringList>
#include <QValidator>

class QLineEdit;

namespace orvo {

/// Records hold Windows-1251. A letter beyond it would be stored as "?" without a word: the field
/// refuses the input that brings it, a paste as a whole, and a tool tip at the field names the
/// letters. A letter that came in parts ("й" as "и" and its breve) is put together instead.
/// A text that the field is filled with is never refused, and never cut.
class ORVOCLIENT_EXPORT RecordTextValidator : public QValidator {
    Q_OBJECT
public:
    /// Letters that a field takes. What it is filled with may be longer and stays whole, too.
    static constexpr int longest = 1000000;

    /// Watches what is typed into the field and becomes its child.
    static void install(QLineEdit* field);
    /// The letters of a text that records lack, each once, in their order; a letter that does not
    /// show is given as "U+200B".
    static QStringList missingLetters(const QString& text);

    State validate(QString& text, int& cursor) const override;

signals:
    void refused(const QStringList& letters) const;
    void tooLong() const;

private:
    using QValidator::QValidator;
};

} // namespace orvo

#endif
