#include "adapters/fake/FakeScriptSyntax.h"
#include "adapters/linux/PluginLoader.h"

#include <QFile>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

// First, for what has been loaded stays.
TEST(PluginLoader, theEnginesLibraryIsLoadedOnlyWhenItIsAskedFor) {
    const auto isLoaded = [] {
        QFile maps(QStringLiteral("/proc/self/maps"));
        return maps.open(QIODevice::ReadOnly) && maps.readAll().contains("libjavascriptcoregtk");
    };
    PluginLoader<ScriptSyntax> loader(QStringLiteral("script_syntax"));
    EXPECT_FALSE(isLoaded());
    EXPECT_TRUE(loader.port());
    EXPECT_TRUE(isLoaded());
    EXPECT_EQ(loader.port(), loader.port());
}

TEST(PluginLoader, aMissingPluginIsNull) {
    PluginLoader<ScriptSyntax> loader(QStringLiteral("there_is_no_such_plugin"));
    EXPECT_EQ(loader.port(), nullptr);
    EXPECT_EQ(loader.port(), nullptr);
    EXPECT_EQ(PluginLoader<ScriptSyntax>(QStringLiteral("upload_http")).port(), nullptr)
        << "a module that is no plugin";
}

/// The engine of each kind; the real one through its plugin, as the program gets it.
struct Fake {
    ScriptSyntax *engine() { return &m_engine; }
    FakeScriptSyntax m_engine;
};
struct Plugin {
    ScriptSyntax *engine() { return m_loader.port(); }
    PluginLoader<ScriptSyntax> m_loader{QStringLiteral("script_syntax")};
};

template <class Kind>
class ScriptSyntaxContract : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(kind.engine());
        context = kind.engine()->makeContext();
        ASSERT_TRUE(context);
    }
    std::optional<QString> check(const char *script) { return context->syntaxCheck(QString::fromUtf8(script)); }

    Kind kind;
    std::unique_ptr<ScriptContext> context;
};

using Kinds = testing::Types<Fake, Plugin>;
TYPED_TEST_SUITE(ScriptSyntaxContract, Kinds);

TYPED_TEST(ScriptSyntaxContract, aSoundScriptHasNoMessage) {
    EXPECT_EQ(this->check("function uploadImage(imageBase64, fileName) { return 'é'; }"), std::nullopt);
    EXPECT_EQ(this->check(""), std::nullopt);
    EXPECT_EQ(this->check("// uploadImage"), std::nullopt);
}

TYPED_TEST(ScriptSyntaxContract, anUnsoundScriptHasTheEnginesWords) {
    EXPECT_EQ(this->check("function uploadImage() {"), QStringLiteral("SyntaxError: Unexpected end of script"));
    EXPECT_TRUE(this->check("}").value_or(QString()).startsWith(QStringLiteral("SyntaxError: ")));
}

TYPED_TEST(ScriptSyntaxContract, aContextIsAskedAgainAndAgain) {
    EXPECT_TRUE(this->check("("));
    EXPECT_FALSE(this->check("()=>{}"));
    EXPECT_TRUE(this->check("("));
}

TYPED_TEST(ScriptSyntaxContract, aScriptIsLookedAtAndNotRun) {
    EXPECT_EQ(this->check("throw new Error('run')"), std::nullopt);
    EXPECT_EQ(this->check("for (;;);"), std::nullopt);
}

TYPED_TEST(ScriptSyntaxContract, contextsAreIndependent) {
    const auto other = this->kind.engine()->makeContext();
    ASSERT_TRUE(other);
    this->context.reset();
    EXPECT_TRUE(other->syntaxCheck(QStringLiteral("(")));
}

TYPED_TEST(ScriptSyntaxContract, aSoundScriptHasNoLine) {
    EXPECT_EQ(this->context->errorLine(), std::nullopt);
    EXPECT_TRUE(this->check("("));
    EXPECT_FALSE(this->check("f()"));
    EXPECT_EQ(this->context->errorLine(), std::nullopt);
}

TEST(JavaScriptCoreSyntax, tellsTheLineCountedFromOne) {
    PluginLoader<ScriptSyntax> loader(QStringLiteral("script_syntax"));
    const auto context = loader.port()->makeContext();
    EXPECT_TRUE(context->syntaxCheck(QStringLiteral(")")));
    EXPECT_EQ(context->errorLine(), 1);
    EXPECT_TRUE(context->syntaxCheck(QStringLiteral("a\n\n)\nb")));
    EXPECT_EQ(context->errorLine(), 3);
}

TEST(JavaScriptCoreSyntax, theEngineHasTheLastWordOnSyntax) {
    PluginLoader<ScriptSyntax> loader(QStringLiteral("script_syntax"));
    const auto context = loader.port()->makeContext();
    for (const char *bad : {"let a; let a;", "return 1", "await 1 2", "var class = 1", "'\n'", "a b"})
        EXPECT_TRUE(context->syntaxCheck(QString::fromUtf8(bad))) << bad;
    EXPECT_TRUE(context->syntaxCheck(QStringLiteral("(").repeated(200'000)));
}

} // namespace
} // namespace tavrine
