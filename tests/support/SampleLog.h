#pragma once

#include "support/FramePicture.h"

#include <mutex>
#include <vector>

namespace tavrine::test {

/// What a stream gave out, kept or let go as a test says.
class SampleLog {
public:
    struct Entry {
        std::optional<int> status;
        MediaTime time{};
        std::uint64_t number = 0;
        int buffer = -1;
        QSize size;
        std::vector<QRect> changed;
        QImage picture;
    };

    void take(const ScreenSample &sample) {
        const std::lock_guard lock(m_mutex);
        Entry entry;
        entry.status = sample.status;
        entry.time = sample.presentationTime;
        if (sample.frame) {
            entry.number = sample.frame->number;
            entry.buffer = sample.frame->buffer;
            entry.size = sample.frame->size;
            entry.changed = sample.frame->changed;
            if (m_copies)
                entry.picture = pictureOf(*sample.frame);
            if (m_keeps)
                m_kept.push_back(sample.frame);
        }
        m_entries.push_back(std::move(entry));
    }
    [[nodiscard]] std::vector<Entry> entries() const {
        const std::lock_guard lock(m_mutex);
        return m_entries;
    }
    [[nodiscard]] size_t count() const {
        const std::lock_guard lock(m_mutex);
        return m_entries.size();
    }
    [[nodiscard]] Entry last() const {
        const std::lock_guard lock(m_mutex);
        return m_entries.empty() ? Entry{} : m_entries.back();
    }
    void setKeeps(bool keeps) {
        const std::lock_guard lock(m_mutex);
        m_keeps = keeps;
    }
    void setCopies(bool copies) {
        const std::lock_guard lock(m_mutex);
        m_copies = copies;
    }
    std::vector<std::shared_ptr<const ScreenFrame>> takeKept() {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_kept, {});
    }

private:
    mutable std::mutex m_mutex;
    std::vector<Entry> m_entries;
    std::vector<std::shared_ptr<const ScreenFrame>> m_kept;
    bool m_keeps = false;
    bool m_copies = true;
};

} // namespace tavrine::test
