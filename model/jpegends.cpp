// SPDX-License-Identifier: MIT
#include "model/jpegends.h"

#include <iterator>

int JpegEnds::next(const QByteArray &image, int from)
{
    if (!m_image.isSharedWith(image))
        forget();
    const auto later = m_stretches.upperBound(from);
    if (later != m_stretches.begin() && std::prev(later).value() >= from) {
        const int known = std::prev(later).value();
        return known < image.size() ? known : -1;
    }

    // What begins from the next stretch on is known; a marker that begins right before it has its second byte there.
    const bool isLast = later == m_stretches.end();
    const int known = isLast ? image.size() : later.value();
    const int searchedTo = isLast ? image.size() : later.key() + 1;
    const int found = QByteArray::fromRawData(image.constData() + from, searchedTo - from).indexOf("\xFF\xD9");
    const int end = found >= 0 ? from + found : known;

    constexpr int shortestStretch = 4096; // Reading less costs next to nothing.
    if (end - from >= shortestStretch) {
        if (!isLast && found < 0)
            m_stretches.erase(later);
        m_stretches.insert(from, end);
        m_image = image;
    }
    return end < image.size() ? end : -1;
}

void JpegEnds::forget()
{
    m_stretches.clear();
    m_image.clear();
}
