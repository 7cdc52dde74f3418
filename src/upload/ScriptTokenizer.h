#pragma once

#include <QStringView>

#include <vector>

namespace tavrine {

/// What a piece of a script is, for its colour. Words that are no keywords, operators and white space are not told.
enum class ScriptTokenKind { keyword, number, string, templateText, comment, regex, functionName, bracket };

struct ScriptToken {
    qsizetype start;
    qsizetype length;
    ScriptTokenKind kind;
    bool operator==(const ScriptToken &) const = default;
};

/// What one line leaves open for the next. A value that fits into an int, as highlighters keep it.
struct ScriptLineState {
    enum class Mode { code, comment, templateText };

    /// Substitutions of template literals that are told apart, one within the other. Deeper ones are coloured as code.
    static constexpr int deepest = 3;
    /// Open braces that are counted within one substitution.
    static constexpr int mostBraces = 127;

    Mode mode = Mode::code;
    bool endsOperand = false; ///< the code before ended in something that can be divided
    int depth = 0;            ///< open substitutions
    int braces[deepest] = {}; ///< open braces within each

    bool operator==(const ScriptLineState &) const = default;
    [[nodiscard]] int packed() const;
    [[nodiscard]] static ScriptLineState unpacked(int packed); ///< from -1: the start of a script
};

/// The tokens of one line, in order, and in `state` what it leaves open. Works on any text: what cannot be a script is
/// coloured as far as it goes.
[[nodiscard]] std::vector<ScriptToken> scriptTokens(QStringView line, ScriptLineState &state);

} // namespace tavrine
