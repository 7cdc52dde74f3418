#include "shell/settings/TriggerSettingsView.h"

#include "look/Toggle.h"

namespace tavrine {

using namespace look;

TriggerSettingsView::TriggerSettingsView(const Texts &texts, std::unique_ptr<ShortcutEditor> editor,
                                         FeatureFlags &flags, UrlOpener &urlOpener)
    : SettingsPage(QLatin1String(texts.title), QLatin1String(texts.subtitle)) {
    addSection()->add(makeFlagRow(texts.feature, QLatin1String(texts.title), QLatin1String(texts.switchNote), flags));
    addSection(QStringLiteral("Shortcut"), new ShortcutEditorView(std::move(editor),
                                                                  {.typeNote = QLatin1String(texts.typeNote),
                                                                   .keyTitle = QStringLiteral("Key"),
                                                                   .keyNote = {},
                                                                   .doubleTapNote = QLatin1String(texts.doubleTapNote)},
                                                                  urlOpener));
}

SettingsRow *makeFlagRow(Feature feature, const QString &title, const QString &note, FeatureFlags &flags) {
    const auto [row, toggle] = makeToggleRow(QLatin1String(textOf(feature).icon), title, note);
    toggle->setChecked(flags.isOn(feature));
    QObject::connect(toggle, &QAbstractButton::toggled, row, [&flags, feature](bool isOn) {
        if (flags.isOn(feature) != isOn)
            flags.set(feature, isOn);
    });
    QObject::connect(&flags, &FeatureFlags::published, toggle,
                     [toggle = toggle, feature](Feature published, bool isOn) {
                         if (published == feature)
                             toggle->setChecked(isOn);
                     });
    return row;
}

} // namespace tavrine
