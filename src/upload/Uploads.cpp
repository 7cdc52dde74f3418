#include "upload/Uploads.h"

#include "base/SerialQueue.h"
#include "base/Time.h"
#include "base/UserDefaults.h"
#include "upload/CustomUploadManager.h"
#include "upload/JSUploadEngine.h"

#include <QPointer>

#include <utility>

namespace tavrine {

Uploads::Uploads(Ports ports, QObject *parent)
    : QObject(parent), m_ports(std::move(ports)), m_wasEnabled(preference::cloudUploadEnabled.get(m_ports.defaults)),
      m_preferences(m_ports.center.addObserver(QLatin1String(UserDefaults::didChangeNotification),
                                               [this](const Notification &) { preferencesChanged(); })) {}

Uploads::~Uploads() = default;

void Uploads::preferencesChanged() {
    const bool isEnabled = preference::cloudUploadEnabled.get(m_ports.defaults);
    if (std::exchange(m_wasEnabled, isEnabled) == isEnabled)
        return;
    if (m_manager)
        m_manager->takePreference();
    else if (isEnabled)
        static_cast<void>(manager()); // has the script read
}

bool Uploads::isButtonShown() {
    return (m_manager || m_wasEnabled) && manager().isConfigured();
}

CustomUploadManager &Uploads::manager() {
    if (!m_manager) {
        m_manager = std::make_unique<CustomUploadManager>(CustomUploadManager::Ports{
            .defaults = m_ports.defaults, .keychain = m_ports.keychain, .time = m_ports.time});
        connect(m_manager.get(), &CustomUploadManager::changed, this, &Uploads::tell);
    }
    return *m_manager;
}

void Uploads::tell() {
    const bool isShown = m_manager->isConfigured();
    if (std::exchange(m_toldShown, isShown) != isShown)
        Q_EMIT isButtonShownChanged();
}

JSUploadEngine &Uploads::engine() {
    if (!m_engine)
        m_engine = std::make_unique<JSUploadEngine>(m_ports.workerPath, m_ports.time);
    return *m_engine;
}

QString Uploads::uploadFileName() {
    return engine().uploadFileName();
}

UploadRunner Uploads::runner() {
    return [self = QPointer(this)](const QString &script, const QString &imageBase64, const QString &fileName,
                                   Seconds timeout, const auto &completion) {
        if (!self) // the picture was ready after the end
            return;
        JSUploadEngine &engine = self->engine();
        engine.queue().async([&engine, script, imageBase64, fileName, timeout, completion] {
            engine.run(script, imageBase64, fileName, timeout.count(), completion);
        });
    };
}

std::unique_ptr<UploadButton> Uploads::makeButton(std::function<QImage()> picture, UploadButton::AfterLink afterLink) {
    if (!m_pictureQueue)
        m_pictureQueue = std::make_unique<SerialQueue>(QStringLiteral("com.tavrine.upload"));
    const QPointer self(this);
    auto button = std::make_unique<UploadButton>(
        UploadButton::Ports{m_ports.pasteboard, m_ports.time, *m_pictureQueue},
        UploadButton::Actions{
            .isShown = [self] { return self && self->isButtonShown(); },
            .script = [self] { return self->manager().savedScript(); },
            .picture = [pngData = m_ports.pngData, picture = std::move(picture)]() -> UploadButton::PngMaker {
                return [pngData, taken = picture()] { return pngData(taken); };
            },
            .run = runner(),
            .uploadFileName = [self] { return self ? self->uploadFileName() : QString(); },
            .showToast =
                [self](const QString &message, const QString &icon) {
                    if (self && self->m_showToast)
                        self->m_showToast(message, icon);
                }},
        afterLink);
    connect(this, &Uploads::isButtonShownChanged, button.get(), &UploadButton::changed);
    return button;
}

} // namespace tavrine
