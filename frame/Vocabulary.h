// Vocabulary.h: the names and numbers that the editors, the host library, the stores and the admin
// command share. Each is spelled here and nowhere else; scripts/check-sources looks for a second
// spelling. The constants bear the names they stand for, so that a search for one finds its uses.
//
// No Qt and nothing of the library is needed: the platform includes this header like the contracts.
#ifndef ORVO_FRAME_VOCABULARY_H
#define ORVO_FRAME_VOCABULARY_H

#include <cstdint>
#include <initializer_list>

namespace orvo {

/// The tables, as requests name them and notifications repeat them.
namespace table {
inline constexpr char Users[] = "Users";
inline constexpr char MenuFileExt[] = "MenuFileExt";
inline constexpr char MenuResourceFolder[] = "MenuResourceFolder";
inline constexpr char MenuResource[] = "MenuResource";
inline constexpr char MenuFolder[] = "MenuFolder";
inline constexpr char Menu[] = "Menu";
/// The contents of forms and files: only notifications and the stores know it.
inline constexpr char MenuResourceFile[] = "MenuResourceFile";
} // namespace table

/// The fields, of whichever table. Which table has which is in platform/store/Schema.cpp.
namespace field {
inline constexpr char KeyLink[] = "KeyLink"; ///< the identifier, field 0 of every table
inline constexpr char parent[] = "parent";   ///< of `Menu`
inline constexpr char ParentKey[] = "ParentKey";
inline constexpr char FolderKey[] = "FolderKey"; ///< of `Menu`: the desktop
inline constexpr char MenuResourceKey[] = "MenuResourceKey";
inline constexpr char MenuResourceFolderKey[] = "MenuResourceFolderKey";
inline constexpr char UsersKey[] = "UsersKey"; ///< who holds a form's lock
inline constexpr char caption[] = "caption";
inline constexpr char name_[] = "name_";
inline constexpr char type_[] = "type_";   ///< Kind
inline constexpr char order_[] = "order_"; ///< a number in `Menu`, a sort class in `MenuFolder`
inline constexpr char isFolder[] = "isFolder";
inline constexpr char ico[] = "ico";
inline constexpr char separator[] = "separator";
inline constexpr char oneCopy[] = "oneCopy";
inline constexpr char params[] = "params";
inline constexpr char dateTimeEdit[] = "dateTimeEdit"; ///< since when a form is locked
inline constexpr char login_[] = "login_";
inline constexpr char lastName[] = "lastName";
inline constexpr char firstName[] = "firstName";
inline constexpr char midlName[] = "midlName";
inline constexpr char program[] = "program";
inline constexpr char fileExt[] = "fileExt";
inline constexpr char time[] = "time"; ///< of `MenuResourceFile`, like `size`
inline constexpr char size[] = "size";
} // namespace field

/// Key 1 and the following of the tables that several places give keys; key 0 is `KeyLink`.
namespace keylist {
inline constexpr std::initializer_list<const char*> Users = {"login_"};
inline constexpr std::initializer_list<const char*> MenuResourceFolder = {
    "type_;ParentKey;caption", "type_;caption", "ParentKey"};
inline constexpr std::initializer_list<const char*> MenuResource = {
    "type_;MenuResourceFolderKey;name_", "type_;name_", "MenuResourceFolderKey"};
/// What the menu editor needs of `MenuResource`.
inline constexpr std::initializer_list<const char*> MenuResourceByName = {"name_"};
inline constexpr std::initializer_list<const char*> MenuFolder = {
    "order_;caption", "order_;ParentKey;caption", "ParentKey;order_;caption"};
inline constexpr std::initializer_list<const char*> Menu = {"parent;order_"};
} // namespace keylist

/// Keys of rows that no record stands behind.
namespace rowkey {
inline constexpr char desktops[] = "mainnode";       ///< top of the tree of desktops
inline constexpr char elements[] = "MenuRootNode";   ///< top of the tree of menu elements
inline constexpr char resources[] = "MenuResources"; ///< top of modules, functions and forms
inline constexpr char files[] = "FileResources";     ///< top of the file area
inline constexpr char orphans[] = "WrongFolder";     ///< forms whose folder is gone
} // namespace rowkey

/// `type_` of resources; folders bear the kind of what they hold. Only 1 to 4 are stored.
struct Kind {
    enum : int32_t {
        None = 0, ///< the top row of modules, functions and forms
        Module = 1,
        Function = 2,
        Form = 3,
        File = 4,
        Orphans = 5, ///< the row of forms whose folder is gone
    };
};

/// Captions of the top folders of the kinds 1 to 3, in UTF-8: the editors and the stores find these
/// folders by them.
namespace topfolder {
inline constexpr char modules[] = "модули";
inline constexpr char functions[] = "функции";
inline constexpr char forms[] = "формы отображения";
} // namespace topfolder

/// `order_` of `MenuFolder`: a sort class, so that folders come before desktops.
namespace sortclass {
inline constexpr char folder[] = "1000";
inline constexpr char desktop[] = "2000";
} // namespace sortclass

/// The requests that a session sends by name.
namespace request {
inline constexpr char TableRecords[] = "TableRecords";
inline constexpr char TableStructure[] = "TableStructure";
inline constexpr char UserProp[] = "UserProp";
} // namespace request

/// The command by which a module asks its host to open a form.
inline constexpr char runFileCommand[] = "RUN_FILE";

/// The folder of the file area whose files serve as icons, and its place below the work directory,
/// where the file area is mirrored.
inline constexpr char iconFolder[] = "icons";
inline constexpr char mirrorPath[] = "files/";

} // namespace orvo

/// What a notification says of its record.
enum OrvoEvent : int32_t {
    OrvoEventInsert = 601,
    OrvoEventUpdate = 602,
    OrvoEventDelete = 603,
    OrvoEventOther = 631, ///< parsed like an insert; no module acts on it
};

#endif
