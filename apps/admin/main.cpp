// orvo-admin: everything about a store that is no editing: making it, filling it, checking it, its
// users, locks, forms and files.
#include "apps/admin/CommandLine.h"
#include "apps/admin/Failure.h"
#include "apps/admin/Output.h"
#include "apps/admin/Verb.h"
#include "apps/language/Language.h"
#include "frame/QtCompat.h"
#include "frame/StdText.h"

#include <QCoreApplication>

#include <csignal>
#include <exception>
#include <new>

int main(int argc, char** argv) {
    using namespace orvo;
    using namespace orvo::admin;
    // Names and captions are Russian; a locale without them must not turn them into question marks.
    qt::speakUtf8();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("orvo-admin"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ORVO_VERSION));
    const QStringList arguments = QCoreApplication::arguments();
    const language::Speaker speaker(language::choose(language::given(arguments)));
    // A reader that has seen enough ("| head") is found by finishOutput.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        const int code = runCommandLine(arguments);
        if (!finishOutput())
            throw Failure(StdText::tr("вывод не принят: диск полон или канал закрыт"));
        return code;
    } catch (const Interruption& interruption) {
        complain(interruption.what());
        return Interrupted;
    } catch (const Failure& failure) {
        complain(failure.what());
    } catch (const std::bad_alloc&) {
        complain(StdText::tr("не хватает памяти"));
    } catch (const std::exception& error) {
        complain(error.what());
    }
    return Broken;
}
