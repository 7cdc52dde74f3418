// A program that runs once: prints what it became and each time it is opened again. usage: NAME [ACTION | --service]

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
    const QString word = QCoreApplication::arguments().value(1);
    const bool isByBus = word == QLatin1String("--service");
    DBusSingleInstance instance(
        {.action = isByBus ? QString() : word, .isByBus = isByBus},
        {.startupId = qgetenv("DESKTOP_STARTUP_ID"), .activationToken = qgetenv("XDG_ACTIVATION_TOKEN")});
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
    instance.listen([&](const tavrine::StartIdentifiers &identifiers, const QString &action) {
        say("reopened");
        if (!identifiers.startupId.isEmpty())
            say("by " + identifiers.startupId);
        if (!identifiers.activationToken.isEmpty())
            say("with " + identifiers.activationToken);
        if (!action.isEmpty())
            say("for " + action.toUtf8());
    });
    return QCoreApplication::exec();
}
