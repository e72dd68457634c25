// Verb.h: what a verb of orvo-admin is, and the table of them. A new verb is one file in verbs/
// that defines a Verb, its name in CMakeLists.txt, one declaration here and one line in Verbs.cpp.
#ifndef ORVO_ADMIN_VERB_H
#define ORVO_ADMIN_VERB_H

#include "platform/store/Maintenance.h"
#include "platform/store/StoreUrl.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QList>
#include <QStringList>

#include <memory>
#include <string>
#include <vector>

namespace orvo::admin {

/// Exit codes of the command.
enum Exit : int {
    Done = 0,          ///< done; for check: no errors (warnings are allowed)
    ErrorsFound = 1,   ///< check found errors
    Broken = 2,        ///< wrong arguments, or the work failed: one line on standard error says why
    Interrupted = 130, ///< the user ended the work; it left nothing half-done
};

/// The options of a verb. --help and the shells' completion are made of them; a word for a value
/// says what may stand there (Completion.h).
using OptionList = QList<QCommandLineOption>;

/// One call of a verb, with its arguments counted and its options known.
class Invocation {
public:
    /// `isDefault`: nobody has named the store.
    Invocation(store::StoreUrl storeUrl, bool isDefault, const QCommandLineParser& parser);

    /// The arguments behind the verb.
    const QStringList& arguments() const { return m_arguments; }
    /// The argument at that place, UTF-8.
    std::string argument(int place) const;
    bool has(const char* option) const;
    /// The value of an option, UTF-8; empty if it is not given.
    std::string value(const char* option) const;
    /// Those of an option that may be given several times, in their order.
    std::vector<std::string> values(const char* option) const;

    const store::StoreUrl& storeUrl() const { return m_storeUrl; }
    bool isDefaultStore() const { return m_isDefault; }
    /// Opens the store; throws a Failure with the store's own line.
    std::unique_ptr<store::MaintainedStore> open() const;

private:
    store::StoreUrl m_storeUrl;
    bool m_isDefault;
    const QCommandLineParser& m_parser;
    QStringList m_arguments;
};

/// The login under which the command writes: it stands in the change log.
inline constexpr const char* adminLogin = "admin";
/// As what it stands there.
inline constexpr const char* adminProgram = "orvo-admin";

struct Verb {
    const char* name;              ///< one word, or two: "put form"
    const char* arguments;         ///< as the usage line shows them
    const char* summary;           ///< one line for the list of verbs
    const char* help;              ///< some lines more for the help of the verb
    int least, most;               ///< number of arguments; most < 0: any number
    void (*options)(OptionList&);  ///< adds the verb's options; null if it has none
    int (*run)(const Invocation&); ///< gives an Exit; may throw Failure
};

extern const Verb initVerb, demoVerb, checkVerb;
extern const Verb userAddVerb, userChangeVerb, userRemoveVerb, userLoginVerb, userListVerb;
extern const Verb extAddVerb, extChangeVerb, extRemoveVerb, extListVerb;
extern const Verb lockVerb, unlockVerb;
extern const Verb putFormVerb, putFileVerb, getFormVerb, getFileVerb, listFormsVerb, listFilesVerb;
extern const Verb historyVerb, undoVerb, pruneVerb, diffVerb, applyVerb, exportVerb, importVerb,
    backupVerb, restoreVerb;

/// All verbs in the order of the help.
const std::vector<const Verb*>& verbs();

} // namespace orvo::admin

#endif
