// Keys.h: the keys of both editors and of the client's window, once. Menus, tool tips, the
// keyboard's own way and the table of the user guide are made of this list.
//
// Letters are meant by their key: Ctrl+С of a Russian keyboard is Ctrl+C, see sequences().
#ifndef ORVO_FRAME_KEYS_H
#define ORVO_FRAME_KEYS_H

#include "frame/QtCompat.h"
#include "frame/Text.h"
#include "frame/Vocabulary.h"

#include <QKeyEvent>
#include <QKeySequence>
#include <QList>
#include <QString>
#include <QStringList>

namespace orvo::keys {

/// The menus of the client's window in which a module's commands are shown.
enum class Menu { Client, Edit, View, Go, Help };

struct Command {
    const char* id;
    Menu menu;
    const char* keys; ///< portable text, several split by blanks; the first is shown
    const char* text; ///< in menus
    const char* use;  ///< what it does where, for the user guide
};

// Ids that code names.
inline constexpr char newItem[] = "newItem";
inline constexpr char newFolder[] = "newFolder";
inline constexpr char newModule[] = "newModule";
inline constexpr char newFunction[] = "newFunction";
inline constexpr char newFile[] = "newFile";
inline constexpr char rename[] = "rename";
inline constexpr char cut[] = "cut";
inline constexpr char copy[] = "copy";
inline constexpr char paste[] = "paste";
inline constexpr char remove[] = "remove";
inline constexpr char moveUp[] = "moveUp";
inline constexpr char moveDown[] = "moveDown";
inline constexpr char moveIn[] = "moveIn";
inline constexpr char moveOut[] = "moveOut";
inline constexpr char choose[] = "choose";
inline constexpr char toggle[] = "toggle";
inline constexpr char applyToAll[] = "applyToAll";
inline constexpr char extract[] = "extract";
inline constexpr char unlock[] = "unlock";
inline constexpr char save[] = "save";
inline constexpr char cancel[] = "cancel";
inline constexpr char preview[] = "preview";
inline constexpr char openForm[] = "openForm";
inline constexpr char palette[] = "palette";
inline constexpr char history[] = "history";
inline constexpr char rowHistory[] = "rowHistory";
inline constexpr char branchHistory[] = "branchHistory";
inline constexpr char versions[] = "versions";
inline constexpr char problems[] = "problems";
inline constexpr char unwritten[] = "unwritten";
inline constexpr char failure[] = "failure";
inline constexpr char beside[] = "beside";
inline constexpr char ownWindow[] = "ownWindow";
inline constexpr char find[] = "find";
inline constexpr char findAll[] = "findAll";
inline constexpr char uses[] = "uses";
inline constexpr char nextHit[] = "nextHit";
inline constexpr char previousHit[] = "previousHit";
inline constexpr char searchBy[] = "searchBy";
inline constexpr char nextPane[] = "nextPane";
inline constexpr char previousPane[] = "previousPane";
inline constexpr char nextTab[] = "nextTab";
inline constexpr char previousTab[] = "previousTab";
inline constexpr char menuBar[] = "menuBar";
inline constexpr char contextMenu[] = "contextMenu";
inline constexpr char closeTab[] = "closeTab";
inline constexpr char undo[] = "undo";
inline constexpr char redo[] = "redo";
inline constexpr char reopen[] = "reopen";
inline constexpr char openStore[] = "openStore";
inline constexpr char quit[] = "quit";
inline constexpr char help[] = "help";

// clang-format off
inline constexpr Command commands[] = {
    {newItem, Menu::Edit, "Ins", QT_TRANSLATE_NOOP("orvo", "Новая строка"), QT_TRANSLATE_NOOP("orvo", "новый рабочий стол, модуль меню или ресурс того вида, что в папке")},
    {newFolder, Menu::Edit, "Shift+Ins", QT_TRANSLATE_NOOP("orvo", "Новая папка"), QT_TRANSLATE_NOOP("orvo", "новая папка столов, меню или ресурсов")},
    {newModule, Menu::Edit, "Ctrl+1", QT_TRANSLATE_NOOP("orvo", "Новый модуль"), QT_TRANSLATE_NOOP("orvo", "модули в меню, модуль в ресурсы")},
    {newFunction, Menu::Edit, "Ctrl+2", QT_TRANSLATE_NOOP("orvo", "Новая функция"), QT_TRANSLATE_NOOP("orvo", "функции в меню, функция в ресурсы")},
    {newFile, Menu::Edit, "Ctrl+3", QT_TRANSLATE_NOOP("orvo", "Новый файл"), QT_TRANSLATE_NOOP("orvo", "формы в меню; загрузить файлы в ресурсы")},
    {rename, Menu::Edit, "F2", QT_TRANSLATE_NOOP("orvo", "Переименовать"), QT_TRANSLATE_NOOP("orvo", "имя стола, наименование элемента и ресурса; в паспорте — значение строки")},
    {cut, Menu::Edit, "Ctrl+X", QT_TRANSLATE_NOOP("orvo", "Вырезать"), QT_TRANSLATE_NOOP("orvo", "вырезать выделенное")},
    {copy, Menu::Edit, "Ctrl+C", QT_TRANSLATE_NOOP("orvo", "Копировать"), QT_TRANSLATE_NOOP("orvo", "копировать выделенное")},
    {paste, Menu::Edit, "Ctrl+V", QT_TRANSLATE_NOOP("orvo", "Вставить"), QT_TRANSLATE_NOOP("orvo", "вставить в текущую папку")},
    {remove, Menu::Edit, "Del", QT_TRANSLATE_NOOP("orvo", "Удалить"), QT_TRANSLATE_NOOP("orvo", "удалить текущую строку; новую, ещё не сохранённую, — без вопроса")},
    {moveUp, Menu::Edit, "Alt+Up", QT_TRANSLATE_NOOP("orvo", "Переместить вверх"), QT_TRANSLATE_NOOP("orvo", "поменять элемент с соседом выше")},
    {moveDown, Menu::Edit, "Alt+Down", QT_TRANSLATE_NOOP("orvo", "Переместить вниз"), QT_TRANSLATE_NOOP("orvo", "поменять элемент с соседом ниже")},
    {moveIn, Menu::Edit, "Alt+Right", QT_TRANSLATE_NOOP("orvo", "Внести в папку выше"), QT_TRANSLATE_NOOP("orvo", "внести элемент в папку, которая стоит над ним")},
    {moveOut, Menu::Edit, "Alt+Left", QT_TRANSLATE_NOOP("orvo", "Вынести из папки"), QT_TRANSLATE_NOOP("orvo", "вынести элемент из папки и поставить за ней")},
    {choose, Menu::Edit, "Alt+Down", QT_TRANSLATE_NOOP("orvo", "Выбрать значение…"), QT_TRANSLATE_NOOP("orvo", "в паспорте: то же, что кнопка «...»")},
    {toggle, Menu::Edit, "Space", QT_TRANSLATE_NOOP("orvo", "Переключить флажок"), QT_TRANSLATE_NOOP("orvo", "в паспорте: только пробел меняет флажок")},
    {applyToAll, Menu::Edit, "Ctrl+Enter Ctrl+Return", QT_TRANSLATE_NOOP("orvo", "Записать во все выделенные"), QT_TRANSLATE_NOOP("orvo", "в паспорте: это значение во все выделенные строки")},
    {extract, Menu::Edit, "Ctrl+E", QT_TRANSLATE_NOOP("orvo", "Извлечь файлы…"), QT_TRANSLATE_NOOP("orvo", "извлечь файлы выделенных форм и файлов")},
    {unlock, Menu::Edit, "Ctrl+U", QT_TRANSLATE_NOOP("orvo", "Снять блокировку"), QT_TRANSLATE_NOOP("orvo", "узнать, чем и кем форма заблокирована")},
    {save, Menu::Edit, "Ctrl+S", QT_TRANSLATE_NOOP("orvo", "Сохранить"), QT_TRANSLATE_NOOP("orvo", "сохранить открытую правку")},
    {cancel, Menu::Edit, "Esc", QT_TRANSLATE_NOOP("orvo", "Не сохранять"), QT_TRANSLATE_NOOP("orvo", "бросить открытую правку; из поля и из поиска — сначала назад к строкам")},
    {undo, Menu::Edit, "Ctrl+Z", QT_TRANSLATE_NOOP("orvo", "Отменить"), QT_TRANSLATE_NOOP("orvo", "отменить последнее своё действие")},
    {redo, Menu::Edit, "Ctrl+Shift+Z", QT_TRANSLATE_NOOP("orvo", "Повторить"), QT_TRANSLATE_NOOP("orvo", "повторить отменённое")},
    {preview, Menu::View, "F5", QT_TRANSLATE_NOOP("orvo", "Показать как оператору"), QT_TRANSLATE_NOOP("orvo", "меню текущего стола, каким его получит оператор")},
    {openForm, Menu::View, "Ctrl+Enter Ctrl+Return", QT_TRANSLATE_NOOP("orvo", "Открыть схему"), QT_TRANSLATE_NOOP("orvo", "открыть текущую форму")},
    {palette, Menu::View, "F7", QT_TRANSLATE_NOOP("orvo", "Выбор ресурсов рядом"), QT_TRANSLATE_NOOP("orvo", "список ресурсов, который остаётся рядом с меню")},
    {history, Menu::View, "F4", QT_TRANSLATE_NOOP("orvo", "История"), QT_TRANSLATE_NOOP("orvo", "открыть или закрыть историю изменений")},
    {rowHistory, Menu::View, "Shift+F4", QT_TRANSLATE_NOOP("orvo", "История строки"), QT_TRANSLATE_NOOP("orvo", "кто и когда менял текущую строку")},
    {branchHistory, Menu::View, "Ctrl+Shift+F4", QT_TRANSLATE_NOOP("orvo", "История со всем, что внутри"), QT_TRANSLATE_NOOP("orvo", "то же о строке и всём, что внутри неё")},
    {versions, Menu::View, "Ctrl+H", QT_TRANSLATE_NOOP("orvo", "Прежние версии…"), QT_TRANSLATE_NOOP("orvo", "прежнее содержимое текущей формы или файла")},
    {problems, Menu::View, "F8", QT_TRANSLATE_NOOP("orvo", "Проблемы"), QT_TRANSLATE_NOOP("orvo", "открыть или закрыть список того, что не так")},
    {unwritten, Menu::View, "Shift+F8", QT_TRANSLATE_NOOP("orvo", "Не записано"), QT_TRANSLATE_NOOP("orvo", "открыть или закрыть список того, что не записано")},
    {failure, Menu::View, "F12", QT_TRANSLATE_NOOP("orvo", "Сообщение о сбое"), QT_TRANSLATE_NOOP("orvo", "прочесть строку сбоя целиком; ещё раз или Esc — убрать")},
    {beside, Menu::View, "F11", QT_TRANSLATE_NOOP("orvo", "Рядом с вкладками"), QT_TRANSLATE_NOOP("orvo", "вынуть редактор или форму из вкладок и поставить рядом; ещё раз — вернуть")},
    {ownWindow, Menu::View, "Shift+F11", QT_TRANSLATE_NOOP("orvo", "В отдельном окне"), QT_TRANSLATE_NOOP("orvo", "то же в своём окне, например на втором мониторе; ещё раз — вернуть")},
    {find, Menu::Go, "Ctrl+F", QT_TRANSLATE_NOOP("orvo", "Найти"), QT_TRANSLATE_NOOP("orvo", "поле поиска дерева, в котором стоит курсор")},
    {findAll, Menu::Go, "Ctrl+K", QT_TRANSLATE_NOOP("orvo", "Найти всё"), QT_TRANSLATE_NOOP("orvo", "поиск по столам, элементам, ресурсам, файлам и людям")},
    {uses, Menu::Go, "F9", QT_TRANSLATE_NOOP("orvo", "Где используется"), QT_TRANSLATE_NOOP("orvo", "где используется ресурс текущей строки")},
    {nextHit, Menu::Go, "F3", QT_TRANSLATE_NOOP("orvo", "Следующее найденное"), QT_TRANSLATE_NOOP("orvo", "следующая найденная строка")},
    {previousHit, Menu::Go, "Shift+F3", QT_TRANSLATE_NOOP("orvo", "Предыдущее найденное"), QT_TRANSLATE_NOOP("orvo", "предыдущая найденная строка")},
    {searchBy, Menu::Go, "Ctrl+Shift+F", QT_TRANSLATE_NOOP("orvo", "Искать по другому столбцу"), QT_TRANSLATE_NOOP("orvo", "«Искать по»: наименование или ресурс")},
    {nextPane, Menu::Go, "F6", QT_TRANSLATE_NOOP("orvo", "Следующая панель"), QT_TRANSLATE_NOOP("orvo", "следующее дерево, паспорт или панель окна")},
    {previousPane, Menu::Go, "Shift+F6", QT_TRANSLATE_NOOP("orvo", "Предыдущая панель"), QT_TRANSLATE_NOOP("orvo", "то же в обратном порядке")},
    {nextTab, Menu::Go, "Ctrl+PgDown", QT_TRANSLATE_NOOP("orvo", "Следующая вкладка"), QT_TRANSLATE_NOOP("orvo", "следующая вкладка")},
    {previousTab, Menu::Go, "Ctrl+PgUp", QT_TRANSLATE_NOOP("orvo", "Предыдущая вкладка"), QT_TRANSLATE_NOOP("orvo", "предыдущая вкладка")},
    {menuBar, Menu::Go, "F10", QT_TRANSLATE_NOOP("orvo", "Меню окна"), QT_TRANSLATE_NOOP("orvo", "меню «Клиент», «Правка», «Вид», «Переход», «Справка»")},
    {contextMenu, Menu::Go, "Menu Shift+F10", QT_TRANSLATE_NOOP("orvo", "Контекстное меню"), QT_TRANSLATE_NOOP("orvo", "контекстное меню текущей строки")},
    {closeTab, Menu::Client, "Ctrl+W", QT_TRANSLATE_NOOP("orvo", "Закрыть вкладку"), QT_TRANSLATE_NOOP("orvo", "закрыть вкладку с формой или файлом")},
    {reopen, Menu::Client, "Ctrl+R", QT_TRANSLATE_NOOP("orvo", "Открыть модули заново"), QT_TRANSLATE_NOOP("orvo", "прочитать хранилище заново")},
    {openStore, Menu::Client, "Ctrl+O", QT_TRANSLATE_NOOP("orvo", "Открыть хранилище…"), QT_TRANSLATE_NOOP("orvo", "открыть ещё одно хранилище")},
    {quit, Menu::Client, "Ctrl+Q", QT_TRANSLATE_NOOP("orvo", "Выход"), QT_TRANSLATE_NOOP("orvo", "закрыть клиент")},
    {help, Menu::Help, "F1", QT_TRANSLATE_NOOP("orvo", "Руководство"), QT_TRANSLATE_NOOP("orvo", "руководство на главе о том, где стоит курсор")},
};
// clang-format on

/// What the host offers for a record under a command has the id of that as this property.
inline constexpr char commandProperty[] = "orvoCommand";
/// Those commands.
inline constexpr const char* recordCommands[] = {rowHistory, branchHistory, versions};

/// What makes a new resource of that kind, and shows those that there are in the palette.
constexpr const char* newOf(int32_t kind) {
    return kind == Kind::Module ? newModule : kind == Kind::Function ? newFunction : newFile;
}

/// The command of that id; null if the list has none.
inline const Command* command(const QString& id) {
    for (const Command& one : commands)
        if (id == QLatin1String(one.id))
            return &one;
    return nullptr;
}

inline QString text(const Command& command) {
    return Text::tr(command.text);
}

/// The letter that a Latin keyboard has on the key of this Cyrillic one; any other key as it is.
inline int latinKey(int key) {
    static const QString cyrillic = QStringLiteral("ЙЦУКЕНГШЩЗФЫВАПРОЛДЯЧСМИТЬ");
    static const QString latin = QStringLiteral("QWERTYUIOPASDFGHJKLZXCVBNM");
    const int at = key < 0x10000 ? cyrillic.indexOf(QChar(key)) : -1;
    return at < 0 ? key : latin[at].unicode();
}

/// The sequences of some keys in portable text. One of a single Latin letter comes twice: where a
/// keyboard has no Latin layout its key gives a Cyrillic letter.
inline QList<QKeySequence> sequences(const QString& keys) {
    static const QString cyrillic = QStringLiteral("ЙЦУКЕНГШЩЗФЫВАПРОЛДЯЧСМИТЬ");
    QList<QKeySequence> all;
    for (const QString& one : keys.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const QKeySequence sequence = QKeySequence::fromString(one, QKeySequence::PortableText);
        all << sequence;
        const int combined = qt::onlyKey(sequence);
        const int key = combined & ~int(Qt::KeyboardModifierMask);
        for (const QChar letter : cyrillic)
            if (letter.unicode() != key && latinKey(letter.unicode()) == key)
                all << QKeySequence((combined & int(Qt::KeyboardModifierMask)) | letter.unicode());
    }
    return all;
}

inline QList<QKeySequence> sequences(const Command& command) {
    return sequences(QString::fromLatin1(command.keys));
}

/// As menus and tool tips show the first of its keys.
inline QString shown(const Command& command) {
    return sequences(command).first().toString(QKeySequence::NativeText);
}

/// Whether the event is one of the command's keys, whatever the layout of the keyboard.
inline bool matches(const QKeyEvent& event, const Command& command) {
    const int pressed =
        int(event.modifiers() & ~Qt::KeyboardModifiers(Qt::KeypadModifier)) | latinKey(event.key());
    for (const QKeySequence& sequence : sequences(command))
        if (qt::onlyKey(sequence) == pressed)
            return true;
    return false;
}

} // namespace orvo::keys

#endif
