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
    : m_storeUrl(std::move(storeUrl))
    , m_isDefault(isDefault)
    , m_parser(parser)
    , m_arguments(parser.positionalArguments()) {}

std::string Invocation::argument(int place) const {
    return m_arguments.at(place).toStdString();
}

bool Invocation::has(const char* option) const {
    return m_parser.isSet(QString::fromUtf8(option));
}

std::string Invocation::value(const char* option) const {
    return m_parser.value(QString::fromUtf8(option)).toStdString();
}

std::vector<std::string> Invocation::values(const char* option) const {
    std::vector<std::string> all;
    for (const QString& value : m_parser.values(QString::fromUtf8(option)))
        all.push_back(value.toStdString());
    return all;
}

std::unique_ptr<store::MaintainedStore> Invocation::open() const {
    store::Status status;
    auto opened =
        store::openMaintained(m_storeUrl.text(), {adminLogin, false, adminProgram}, &status);
    if (!opened)
        throw Failure(status.text);
    return opened;
}

} // namespace orvo::admin
