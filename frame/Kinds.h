// Kinds.h: what editors, picker, desktop, history and command know of a kind of resource, an entry
// a kind. What a kind has of its own beside it are its actions in the two editors.
#ifndef ORVO_FRAME_KINDS_H
#define ORVO_FRAME_KINDS_H

#include "frame/StdText.h"
#include "frame/Vocabulary.h"

namespace orvo {

struct ResourceKind {
    int32_t number;        ///< Kind
    const char* topFolder; ///< caption of its folder at the top, UTF-8; null: the file area is its
    /// What it is called, UTF-8: 1 "модуль", 2 "модуля", 5 "модулей".
    const char *one, *few, *many;
    bool isFeminine;       ///< the noun
    const char* attribute; ///< the word for it in a menu; null: it stands in no menu
    const char* choice;    ///< title of the list it is chosen from; null: said by what is chosen
    const char* palette;   ///< its name in the palette; null: it is not offered there
    bool hasContents;      ///< stored files belong to its records, which are deleted with them
    int32_t opensAs;       ///< Kind: how the client opens it for an operator
    const char* dragFormat;
    const char* image;     ///< in the trees of the editors
    const char* deskImage; ///< in the menu of an operator
};

/// In the order of the trees.
inline constexpr ResourceKind resourceKinds[] = {
    {Kind::Module, topfolder::modules, ORVO_TEXT("orvo", "модуль"), ORVO_TEXT("orvo", "модуля"),
     ORVO_TEXT("orvo", "модулей"), false, ORVO_TEXT("orvo", "модуль"),
     ORVO_TEXT("orvo", "Выбор модулей АРМ"), ORVO_TEXT("orvo", "Модули"), false, Kind::Module,
     "OrvoResources/modres/dragdrop", ":/res/modul1.png", ":/res/modul1@2x.png"},
    {Kind::Function, topfolder::functions, ORVO_TEXT("orvo", "функция"),
     ORVO_TEXT("orvo", "функции"), ORVO_TEXT("orvo", "функций"), true, ORVO_TEXT("orvo", "функция"),
     ORVO_TEXT("orvo", "Выбор функций АРМ"), ORVO_TEXT("orvo", "Функции"), false, Kind::Function,
     "OrvoResources/funcres/dragdrop", ":/res/function1.png", ":/res/function1@2x.png"},
    {Kind::Form, topfolder::forms, ORVO_TEXT("orvo", "форма"), ORVO_TEXT("orvo", "формы"),
     ORVO_TEXT("orvo", "форм"), true, ORVO_TEXT("orvo", "файл"),
     ORVO_TEXT("orvo", "Выбор форм отображения АРМ"), ORVO_TEXT("orvo", "Формы"), true, Kind::Form,
     "OrvoResources/menures/dragdrop", ":/res/file1.png", ":/res/showscheme1@2x.png"},
    {Kind::File, nullptr, ORVO_TEXT("orvo", "файл"), ORVO_TEXT("orvo", "файла"),
     ORVO_TEXT("orvo", "файлов"), false, nullptr, nullptr, nullptr, true, Kind::File,
     "OrvoResources/sysres/dragdrop", ":/res/file1.png", ":/res/file1@2x.png"},
};

/// Null for a number that is none of a stored kind.
constexpr const ResourceKind* resourceKind(int32_t number) {
    for (const ResourceKind& kind : resourceKinds)
        if (kind.number == number)
            return &kind;
    return nullptr;
}

/// Whether stored files belong to records of that kind.
constexpr bool hasContents(int32_t number) {
    const ResourceKind* kind = resourceKind(number);
    return kind && kind->hasContents;
}

} // namespace orvo

#endif
