#pragma once

#include <string>

namespace orvo {

#pragma GCC visibility push(default) // one translator for all libraries of a program

/// The same as Text for code that knows no Qt: `StdText::tr("Хранилище ")` gives the text, or a
/// piece of it, in the language of the program.
///
/// A program that has translations sets `translator` before it starts a thread; without one the
/// texts stay Russian. A table of texts marks each of them by ORVO_TEXT and translates where it is
/// read.
struct StdText {
#ifdef ORVO_COLLECTS_TEXTS // never compiled: gives the context to those who read the sources for
                           // texts
    Q_DECLARE_TR_FUNCTIONS(orvo)
#endif
    using Translator = std::string (*)(const char* text);
    static inline Translator translator = nullptr; ///< gives UTF-8; called from any thread

    /// `text`: UTF-8, not null.
    static std::string tr(const char* text) {
        return translator ? translator(text) : std::string(text);
    }
};

#pragma GCC visibility pop

} // namespace orvo

/// Marks a text of a table, as QT_TRANSLATE_NOOP does: ORVO_TEXT("orvo", "модуль").
#define ORVO_TEXT(context, text) text
