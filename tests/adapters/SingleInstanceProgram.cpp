// A program that runs once: prints what it became and each time it is opened again. usage: NAME [ACTION]

#include "adapters/linux/DBusSingleInstance.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv) {
    using tavrine::DBusSingleInstance;
    const QCoreApplication application(argc, argv);
    const auto say = [](const QByteArray &text) {
        std::puts(text.constData());
        std::fflush(stdout);
    };
    DBusSingleInstance instance(qgetenv("DESKTOP_STARTUP_ID"), QCoreApplication::arguments().value(1),
                                [&](const QByteArray &startupId, const QString &action) {
                                    say("reopened");
                                    if (!startupId.isEmpty())
                                        say("by " + startupId);
                                    if (!action.isEmpty())
                                        say("for " + action.toUtf8());
                                });
    switch (instance.start()) {
    case DBusSingleInstance::Start::handedOver:
        say("handed over");
        return 0;
    case DBusSingleInstance::Start::otherIsSilent:
        return 1;
    case DBusSingleInstance::Start::first:
        break;
    }
    say("first");
    return QCoreApplication::exec();
}
