// Finding.h: what is wrong with a record, as data, and in the words that people read.
#ifndef ORVO_CHECKS_FINDING_H
#define ORVO_CHECKS_FINDING_H

#include "checks/Namesakes.h"

#include <QString>

#include <string>

namespace orvo::checks {

enum class Problem : uint8_t {
    LoginEmpty,
    LoginTwice,
    ExtensionEmpty,
    ExtensionTwice,
    NoCaption,
    NoParent,
    Circle,
    FixedKey,
    UnknownKind,
    // Desktops
    OrderClassUnknown,
    OrderClassOfOther,
    ParentIsDesktop,
    // Elements
    DesktopUnsaid,
    NoDesktop,
    DesktopIsFolder,
    DesktopSpelling,
    ParentElsewhere,
    ParentNoFolder,
    NoResource,
    NotLaunched,
    NoIcon,
    SameOrder,
    // Folders of resources
    FolderTwice,
    CaptionNoPath,
    UnderTopRow,
    ParentOfOtherKind,
    NoTopFolder,
    // Resources
    NameEmpty,
    NameTwice,
    FolderUnsaid,
    InTopRow,
    NoFolder,
    OrphanForm,
    FolderOfOtherKind,
    LockHolderGone,
    LockOnNoForm,
    NameNoFile,
    NoContent,
};

enum class Severity : uint8_t {
    Error,   ///< something is lost, shown by no editor, or ambiguous
    Warning, ///< it works, but is worth a look
};

struct Finding {
    const store::TableDef* table = nullptr;
    std::string key; ///< of the record; empty: of the table as a whole
    Problem problem = Problem::NoCaption;
    std::string value; ///< what the record holds there: a key, a name, a number

    bool operator==(const Finding& other) const {
        return table == other.table && key == other.key && problem == other.problem &&
               value == other.value;
    }
};

Severity severityOf(Problem problem);
/// A word of ASCII that names the kind for programs; never changed.
const char* identifierOf(Problem problem);
/// Whether the editors lack the record because of it, or what stands below it.
bool isHiding(const Catalogue& records, const Finding& finding);
/// What is wrong, the same for all findings of a kind.
QString titleOf(Problem problem);
/// The same with what it is about: names, with keys beside them.
QString wordsOf(const Catalogue& records, const Namesakes& namesakes, const Finding& finding);

} // namespace orvo::checks

#endif
