// SPDX-License-Identifier: MIT
#pragma once

#include "search/addressbases.h"
#include "search/displaylistscan.h"

#include <QByteArray>
#include <QVector>

class fileTreeDirectory;
class Progress;

/// How the place of a texture in the image was found.
enum class PlacedBy {
    Boot, ///< It is in the first MiB, which the console itself loads to the address in the header.
    Segment, ///< It is in a segment, whose place was found by what its textures look like there.
    Ram, ///< It is elsewhere in RAM; found like a segment.
};

/// "boot", "segment" or "ram".
QString placedByName(PlacedBy placedBy);

/// A texture that display lists use, in the image.
struct DiscoveredTexture
{
    int address = 0; ///< In the image, in bytes.
    int paletteAddress = -1; ///< In the image; -1 when it has none, or none that is known.
    QString format; ///< A key of textureFormats::getAsMap(), or "yuv16".
    int width = 0; ///< Pixels, as for height.
    int height = 0;
    bool isInterleaved = false; ///< Every other row has its 32-bit words exchanged, which no format of the table shows.
    PlacedBy placedBy = PlacedBy::Boot;
    double confidence = 0; ///< From 0 to 1.
    int uses = 0; ///< How often the lists bring it.
    int neighbourhood = 0; ///< Place in Discovery::neighbourhoods.
    QVector<int> commands; ///< Where in the image the commands lie that describe it, ascending.

    /// Whether an entry of the file table shows it right.
    bool canBeAdded() const;
};

/// Lists that lie together, and whose addresses are of one kind.
struct Neighbourhood
{
    PlacedBy placedBy = PlacedBy::Boot;
    int segment = 0; ///< Its number, from 1 to 15; 0 for the other kinds.
    int firstCommand = 0; ///< In the image.
    int lastCommand = 0;
    int textures = 0; ///< How many different ones the lists use.
    bool isPlaced = false;
    FoundBase base; ///< Not for Boot.
};

struct Discovery
{
    QVector<DiscoveredTexture> textures; ///< By address.
    QVector<Neighbourhood> neighbourhoods; ///< By kind and position; also those without a clear base.
};

/// Finds the textures in the big-endian \a image that display lists from \a begin to before \a end use. Ends early, with less,
/// once \a steps says that the work is unwanted.
Discovery discoverTextures(const QByteArray &image, int begin, int end, WorkSteps *steps);

/// Adds the textures of \a discovery to the folder \a name of \a root, which is made when it is missing, in a folder for each
/// neighbourhood. Those that no entry could show right, and those for which the table has an equal entry already, anywhere, are
/// left out. Returns how many were added. The image must be loaded.
int addDiscovered(const Discovery &discovery, fileTreeDirectory *root, const QString &name);
