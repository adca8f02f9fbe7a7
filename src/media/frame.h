#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace framewright {

/// How the samples of a picture lie in memory. Every layout is planar, 8 bits in a byte or 9 to 16
/// in the low bits of a native 16-bit word.
struct PixelLayout {
    enum class Model { yuv, gray, gbr };

    Model model = Model::yuv;
    int bitDepth = 8;
    int chromaShiftX = 1; ///< log2 of the horizontal chroma subsampling: 1 for 4:2:0 and 4:2:2.
    int chromaShiftY = 1;
    bool hasAlpha = false; ///< A further plane, last.

    int planeCount() const { return (model == Model::gray ? 1 : 3) + (hasAlpha ? 1 : 0); }
    int bytesPerSample() const { return bitDepth > 8 ? 2 : 1; }

    static constexpr PixelLayout yuv420p8() { return {}; }
    static constexpr PixelLayout yuv420p10() { return {Model::yuv, 10, 1, 1, false}; }

    bool operator==(PixelLayout const&) const = default;
};

/// What the samples mean, in the code points of ITU-T H.273. 2 is "unspecified".
struct ColorTags {
    int primaries = 2; ///< 1 BT.709, 9 BT.2020, …
    int transfer = 2;  ///< 1 BT.709, 16 PQ, 18 HLG, …
    int matrix = 2;    ///< 1 BT.709, 6 BT.601, 9 BT.2020, 0 RGB
    bool isFullRange = false;
    /// Horizontal place of chroma samples: true for the middle between luma samples (MPEG-1, JPEG),
    /// false for above the left one (MPEG-2, the usual).
    bool chromaIsCentered = false;

    static constexpr ColorTags bt709() { return {1, 1, 1, false, false}; }
    static constexpr ColorTags hlg() { return {9, 18, 9, false, false}; }

    bool isHDR() const { return transfer == 16 || transfer == 18; }

    bool operator==(ColorTags const&) const = default;
};

/// One picture. Copies share the pixels: a copy costs an allocation, not a picture.
///
/// Pixels are changed through `writablePlane` only, which first makes them this Frame's own, so no
/// other copy ever sees the change. Different copies may be used on different threads.
class Frame {
public:
    struct Plane {
        std::uint8_t const* data;
        std::ptrdiff_t stride; ///< Bytes from one row to the next.
        int width;             ///< In samples.
        int height;
    };
    struct WritablePlane {
        std::uint8_t* data;
        std::ptrdiff_t stride;
        int width;
        int height;
    };

    /// Pixels undefined. Throws std::bad_alloc, also for sizes no picture can have.
    Frame(int width, int height, PixelLayout layout, ColorTags colors);

    class Storage; ///< The media module's own.
    explicit Frame(std::unique_ptr<Storage> storage) noexcept;

    Frame(Frame const& other);
    Frame(Frame&&) noexcept;
    Frame& operator=(Frame other) noexcept;
    ~Frame();

    int width() const;
    int height() const;
    PixelLayout layout() const;
    ColorTags colors() const;
    void setColors(ColorTags colors);

    Plane plane(int index) const;

    /// The plane for changing; copies the pixels first when another Frame shares them.
    WritablePlane writablePlane(int index);

    /// Whether both show the very same pixels in memory.
    bool sharesPixelsWith(Frame const& other) const;

    Storage const& storage() const { return *m_storage; }

private:
    std::unique_ptr<Storage> m_storage; ///< Never null, but in a moved-from Frame.
};

/// Gives the memory that is kept for coming pictures back to the system. Pictures in use stay.
/// To be called after a long run, an export for instance; from any thread.
void releaseSpareFrames();

} // namespace framewright
