// SPDX-License-Identifier: MIT
#include "search/blocktexturesearch.h"

#include "base/progress.h"
#include "codec/pictureloader.h"
#include "codec/texturemanipulator.h"
#include "search/patternsearch.h"

#include <algorithm>
#include <tuple>

namespace
{
/// A pattern to search for, and the picture and format that it stands for.
struct Encoding
{
    int picture;
    QSize size;
    QString format;
    int pattern;
};

class BlockSearch
{
public:
    BlockSearch(const QByteArray &image, const QVector<CompressedBlock> &blocks, bool firstOnly, Progress *progress)
        : m_image(image), m_blocks(blocks), m_firstOnly(firstOnly), m_progress(progress),
          m_steps([progress] { return progress && progress->cancelled(); })
    {
        for (const CompressedBlock &block : blocks)
            m_largest = qMax(m_largest, block.unpackedSize);
    }

    QVector<BlockHit> run(const QStringList &files, const QMap<QString, textureFormat> &formats)
    {
        if (m_progress)
            m_progress->setMaximum(files.size());
        for (int i = 0; i < files.size() && !m_steps.isCancelled(); ++i) {
            addPicture(i, files.at(i), formats);
            // As many pictures as are searched for at once in an image of the console's largest size.
            if (m_batch.bytes() > mostPatternBytes || i + 1 == files.size()) {
                searchForBatch();
                if (m_progress)
                    m_progress->setValue(i + 1);
            }
        }
        return m_hits;
    }

private:
    static constexpr qint64 mostPatternBytes = qint64(6) * 1024 * 1024;

    void addPicture(int place, const QString &file, const QMap<QString, textureFormat> &formats)
    {
        const QImage picture = loadPicture(file, [this] { return !m_steps.add(WorkSteps::bytesPerStep); });
        for (const textureFormat &format : formats) {
            if (picture.isNull() || double(picture.width()) * picture.height() * format.bytesPerPixel > m_largest)
                continue;
            const int pattern = m_batch.add(textureManipulator::generateData(picture, format));
            if (pattern >= 0)
                m_encodings.append({place, picture.size(), format.name, pattern});
        }
    }

    void searchForBatch()
    {
        const int firstHit = m_hits.size();
        for (int block = 0; block < m_blocks.size() && !m_steps.isCancelled(); ++block)
            searchInBlock(block);
        sortHits(firstHit);
        m_batch = PatternBatch();
        m_encodings.clear();
    }

    void searchInBlock(int place)
    {
        const QByteArray content = unpackedBlock(m_image, m_blocks.at(place));
        if (!m_steps.add(content.size()))
            return;
        ByteRange range;
        range.data = content.constData();
        range.size = content.size();
        PatternSearch search(range, &m_steps);
        search.setPatterns(m_batch.patterns(), m_firstOnly);
        for (const Encoding &encoding : qAsConst(m_encodings)) {
            PatternSearch::Walk walk(encoding.pattern);
            for (int offset = search.next(&walk); offset >= 0; offset = m_firstOnly ? -1 : search.next(&walk))
                m_hits.append({encoding.picture, encoding.size.width(), encoding.size.height(), encoding.format, place, offset});
        }
    }

    /// Sorts the hits from \a first on, which came by block, and leaves one a picture where one is enough.
    void sortHits(int first)
    {
        std::sort(m_hits.begin() + first, m_hits.end(), [](const BlockHit &a, const BlockHit &b) {
            return std::tie(a.picture, a.format, a.block, a.offset) < std::tie(b.picture, b.format, b.block, b.offset);
        });
        if (m_firstOnly)
            m_hits.erase(std::unique(m_hits.begin() + first, m_hits.end(),
                                     [](const BlockHit &a, const BlockHit &b) { return a.picture == b.picture; }),
                         m_hits.end());
    }

    const QByteArray &m_image;
    const QVector<CompressedBlock> &m_blocks;
    bool m_firstOnly;
    Progress *m_progress;
    WorkSteps m_steps;
    int m_largest = 0; ///< Bytes of the largest content.
    PatternBatch m_batch;
    QVector<Encoding> m_encodings; ///< Of the batch.
    QVector<BlockHit> m_hits;
};
}

QVector<BlockHit> searchInBlocks(const QByteArray &image, const QVector<CompressedBlock> &blocks, const QStringList &files,
                                 const QMap<QString, textureFormat> &formats, bool firstOnly, Progress *progress)
{
    return blocks.isEmpty() ? QVector<BlockHit>() : BlockSearch(image, blocks, firstOnly, progress).run(files, formats);
}
