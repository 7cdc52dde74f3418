#pragma once

#include "base/ConcurrentQueue.h"
#include "capture/reading/OCRManager.h"

namespace tavrine {

class CodeDetector;

/// What reads pictures, and the queues on which that is done: two, since a recognition takes seconds and a scan must
/// not wait for it. Each reads several pictures side by side: what a card asks for must not wait for an editor that has
/// a minute to read. One instance, as long as the process; lives on the main thread.
class Reading {
public:
    /// All outlive this.
    struct Ports {
        Recognizer &recognizer;
        CodeDetector &screenDetector;
        CodeDetector &pictureDetector;
        Time &time;
    };

    explicit Reading(const Ports &ports);
    /// Gives up what is being read: a picture can take its reader a minute, and the queues wait for what was handed in.
    ~Reading();
    Reading(const Reading &) = delete;
    Reading &operator=(const Reading &) = delete;

    [[nodiscard]] OCRManager &manager() { return m_manager; }
    [[nodiscard]] ConcurrentQueue &detectionQueue() { return m_detectionQueue; }

private:
    Ports m_ports;
    ConcurrentQueue m_recognitionQueue;
    ConcurrentQueue m_detectionQueue;
    OCRManager m_manager;
};

} // namespace tavrine
