#include "apps/admin/Verb.h"

#include "apps/admin/Failure.h"

namespace orvo::admin {

const std::vector<const Verb*>& verbs() {
    static const std::vector<const Verb*> all = {
        &initVerb,      &demoVerb,       &checkVerb,                                     //
        &userAddVerb,   &userChangeVerb, &userRemoveVerb, &userLoginVerb, &userListVerb, //
        &extAddVerb,    &extChangeVerb,  &extRemoveVerb,  &extListVerb,                  //
        &lockVerb,      &unlockVerb,                                                     //
        &putFormVerb,   &putFileVerb,    &getFormVerb,    &getFileVerb,                  //
        &listFormsVerb, &listFilesVerb,                                                  //
        &historyVerb,   &undoVerb,       &pruneVerb,                                     //
        &backupVerb,    &restoreVerb,    &exportVerb,     &importVerb,                   //
        &diffVerb,      &applyVerb,
    };
    return all;
}

Invocation::Invocation(store::StoreUrl storeUrl, bool isDefault, const QCommandLineParser& parser)
    : storeUrl_(std::move(storeUrl))
    , isDefault_(isDefault)
    , parser_(parser)
    , arguments_(parser.positionalArguments()) {}

std::string Invocation::argument(int place) const {
    return arguments_.at(place).toStdString();
}

bool Invocation::has(const char* option) const {
    return parser_.isSet(QString::fromUtf8(option));
}

std::string Invocation::value(const char* option) const {
    return parser_.value(QString::fromUtf8(option)).toStdString();
}

std::vector<std::string> Invocation::values(const char* option) const {
    std::vector<std::string> all;
    for (const QString& value : parser_.values(QString::fromUtf8(option)))
        all.push_back(value.toStdString());
    return all;
}

std::unique_ptr<store::MaintainedStore> Invocation::open() const {
    store::Status status;
    auto opened =
        store::openMaintained(storeUrl_.text(), {adminLogin, false, adminProgram}, &status);
    if (!opened)
        throw Failure(status.text);
    return opened;
}

} // namespace orvo::admin
