// Keys.h: the keys of both editors and of the client's window, once. Menus, tool tips, the
// keyboard's own way and the table of the user guide are made of this list.
//
// Letters are meant by their key: Ctrl+С of a Russian keyboard is Ctrl+C, see sequences().
#ifndef ORVO_FRAME_KEYS_H
#define ORVO_FRAME_KEYS_H

#include "frame/QtCompat.h"

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
    {newItem, Menu::Edit, "Ins", "Новая строка", "новый рабочий стол, модуль меню или ресурс того вида, что в папке"},
    {newFolder, Menu::Edit, "Shift+Ins", "Новая папка", "новая папка столов, меню или ресурсов"},
    {newModule, Menu::Edit, "Ctrl+1", "Новый модуль", "модули в меню, модуль в ресурсы"},
    {newFunction, Menu::Edit, "Ctrl+2", "Новая функция", "функции в меню, функция в ресурсы"},
    {newFile, Menu::Edit, "Ctrl+3", "Новый файл", "формы в меню; загрузить файлы в ресурсы"},
    {rename, Menu::Edit, "F2", "Переименовать", "имя стола, наименование элемента и ресурса; в паспорте — значение строки"},
    {cut, Menu::Edit, "Ctrl+X", "Вырезать", "вырезать выделенное"},
    {copy, Menu::Edit, "Ctrl+C", "Копировать", "копировать выделенное"},
    {paste, Menu::Edit, "Ctrl+V", "Вставить", "вставить в текущую папку"},
    {remove, Menu::Edit, "Del", "Удалить", "удалить текущую строку; новую, ещё не сохранённую, — без вопроса"},
    {moveUp, Menu::Edit, "Alt+Up", "Переместить вверх", "поменять элемент с соседом выше"},
    {moveDown, Menu::Edit, "Alt+Down", "Переместить вниз", "поменять элемент с соседом ниже"},
    {moveIn, Menu::Edit, "Alt+Right", "Внести в папку выше", "внести элемент в папку, которая стоит над ним"},
    {moveOut, Menu::Edit, "Alt+Left", "Вынести из папки", "вынести элемент из папки и поставить за ней"},
    {choose, Menu::Edit, "Alt+Down", "Выбрать значение…", "в паспорте: то же, что кнопка «...»"},
    {toggle, Menu::Edit, "Space", "Переключить флажок", "в паспорте: только пробел меняет флажок"},
    {applyToAll, Menu::Edit, "Ctrl+Enter Ctrl+Return", "Записать во все выделенные", "в паспорте: это значение во все выделенные строки"},
    {extract, Menu::Edit, "Ctrl+E", "Извлечь файлы…", "извлечь файлы выделенных форм и файлов"},
    {unlock, Menu::Edit, "Ctrl+U", "Снять блокировку", "узнать, чем и кем форма заблокирована"},
    {save, Menu::Edit, "Ctrl+S", "Сохранить", "сохранить открытую правку"},
    {cancel, Menu::Edit, "Esc", "Не сохранять", "бросить открытую правку; из поля и из поиска — сначала назад к строкам"},
    {undo, Menu::Edit, "Ctrl+Z", "Отменить", "отменить последнее своё действие"},
    {redo, Menu::Edit, "Ctrl+Shift+Z", "Повторить", "повторить отменённое"},
    {preview, Menu::View, "F5", "Показать как оператору", "меню текущего стола, каким его получит оператор"},
    {openForm, Menu::View, "Ctrl+Enter Ctrl+Return", "Открыть схему", "открыть текущую форму"},
    {palette, Menu::View, "F7", "Выбор ресурсов рядом", "список ресурсов, который остаётся рядом с меню"},
    {history, Menu::View, "F4", "История", "открыть или закрыть историю изменений"},
    {rowHistory, Menu::View, "Shift+F4", "История строки", "кто и когда менял текущую строку"},
    {branchHistory, Menu::View, "Ctrl+Shift+F4", "История со всем, что внутри", "то же о строке и всём, что внутри неё"},
    {versions, Menu::View, "Ctrl+H", "Прежние версии…", "прежнее содержимое текущей формы или файла"},
    {problems, Menu::View, "F8", "Проблемы", "открыть или закрыть список того, что не так"},
    {unwritten, Menu::View, "Shift+F8", "Не записано", "открыть или закрыть список того, что не записано"},
    {failure, Menu::View, "F12", "Сообщение о сбое", "прочесть строку сбоя целиком; ещё раз или Esc — убрать"},
    {beside, Menu::View, "F11", "Рядом с вкладками", "вынуть редактор или форму из вкладок и поставить рядом; ещё раз — вернуть"},
    {ownWindow, Menu::View, "Shift+F11", "В отдельном окне", "то же в своём окне, например на втором мониторе; ещё раз — вернуть"},
    {find, Menu::Go, "Ctrl+F", "Найти", "поле поиска дерева, в котором стоит курсор"},
    {findAll, Menu::Go, "Ctrl+K", "Найти всё", "поиск по столам, элементам, ресурсам, файлам и людям"},
    {uses, Menu::Go, "F9", "Где используется", "где используется ресурс текущей строки"},
    {nextHit, Menu::Go, "F3", "Следующее найденное", "следующая найденная строка"},
    {previousHit, Menu::Go, "Shift+F3", "Предыдущее найденное", "предыдущая найденная строка"},
    {searchBy, Menu::Go, "Ctrl+Shift+F", "Искать по другому столбцу", "«Искать по»: наименование или ресурс"},
    {nextPane, Menu::Go, "F6", "Следующая панель", "следующее дерево, паспорт или панель окна"},
    {previousPane, Menu::Go, "Shift+F6", "Предыдущая панель", "то же в обратном порядке"},
    {nextTab, Menu::Go, "Ctrl+PgDown", "Следующая вкладка", "следующая вкладка"},
    {previousTab, Menu::Go, "Ctrl+PgUp", "Предыдущая вкладка", "предыдущая вкладка"},
    {menuBar, Menu::Go, "F10", "Меню окна", "меню «Клиент», «Правка», «Вид», «Переход», «Справка»"},
    {contextMenu, Menu::Go, "Menu Shift+F10", "Контекстное меню", "контекстное меню текущей строки"},
    {closeTab, Menu::Client, "Ctrl+W", "Закрыть вкладку", "закрыть вкладку с формой или файлом"},
    {reopen, Menu::Client, "Ctrl+R", "Открыть модули заново", "прочитать хранилище заново"},
    {openStore, Menu::Client, "Ctrl+O", "Открыть хранилище…", "открыть ещё одно хранилище"},
    {quit, Menu::Client, "Ctrl+Q", "Выход", "закрыть клиент"},
    {help, Menu::Help, "F1", "Руководство", "руководство на главе о том, где стоит курсор"},
};
// clang-format on

/// What the host offers for a record under a command has the id of that as this property.
inline constexpr char commandProperty[] = "orvoCommand";
/// Those commands.
inline constexpr const char* recordCommands[] = {rowHistory, branchHistory, versions};

/// The command of that id; null if the list has none.
inline const Command* command(const QString& id) {
    for (const Command& one : commands)
        if (id == QLatin1String(one.id))
            return &one;
    return nullptr;
}

inline QString text(const Command& command) {
    return QString::fromUtf8(command.text);
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
