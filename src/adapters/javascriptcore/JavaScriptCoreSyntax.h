#pragma once

#include "ports/ScriptSyntax.h"

#include <QObject>

namespace tavrine {

/// The system's JavaScript engine, asked only whether a script can be parsed. The root object of its plugin.
class JavaScriptCoreSyntax final : public QObject, public ScriptSyntax {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID TAVRINE_SCRIPTSYNTAX)
    Q_INTERFACES(tavrine::ScriptSyntax)

public:
    [[nodiscard]] std::unique_ptr<ScriptContext> makeContext() override;
};

} // namespace tavrine
