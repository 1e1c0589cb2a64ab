// SPDX-License-Identifier: MIT
#include "search/displaylist.h"

#include <QtEndian>

DisplayCommand DisplayCommand::at(const char *bytes)
{
    return DisplayCommand(qFromBigEndian<quint64>(bytes));
}

bool DisplayCommand::endsList() const
{
    return m_word == Q_UINT64_C(0xDF00000000000000) || m_word == Q_UINT64_C(0xB800000000000000);
}

bool DisplayCommand::isPossible() const
{
    const bool knownFormat = field(55, 53) <= int(TexelFormat::Intensity);
    switch (operation()) {
    case DisplayOperation::SyncLoad:
    case DisplayOperation::SyncPipe:
    case DisplayOperation::SyncTile: return (m_word & Q_UINT64_C(0x00FFFFFFFFFFFFFF)) == 0;
    case DisplayOperation::SetTextureImage: return knownFormat && field(50, 42) == 0 && address() % textureAlignment == 0;
    case DisplayOperation::SetTile: return knownFormat && field(50, 50) == 0 && field(31, 27) == 0;
    case DisplayOperation::LoadTlut:
    case DisplayOperation::LoadTile:
    case DisplayOperation::SetTileSize: return field(31, 27) == 0 && width() > 0 && height() > 0;
    case DisplayOperation::LoadBlock: return field(31, 27) == 0 && blockTexels() > 0 && top() == 0;
    }
    return false;
}
