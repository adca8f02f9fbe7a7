#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace framewright {

/// The memory layout of a frame's samples. Always planar: 8 bits in a byte, or 9 to 16 in the low
/// bits of a native 16-bit word.
struct PixelLayout {
    enum class Model { yuv, gray, gbr };

    Model model = Model::yuv;
    int bitDepth = 8;
    int chromaShiftX = 1; ///< log2 of the horizontal chroma subsampling: 1 for 4:2:0 and 4:2:2.
    int chromaShiftY = 1;
    bool hasAlpha = false; ///< In one more plane, the last.

    int planeCount() const { return (model == Model::gray ? 1 : 3) + (hasAlpha ? 1 : 0); }
    int bytesPerSample() const { return bitDepth > 8 ? 2 : 1; }

    static constexpr PixelLayout yuv420p8() { return {}; }
    static constexpr PixelLayout yuv420p10() { return {Model::yuv, 10, 1, 1, false}; }

    bool operator==(PixelLayout const&) const = default;
};

/// What the samples mean, in code points of ITU-T H.273; 2 is "unspecified".
struct ColorTags {
    int primaries = 2; ///< 1 BT.709, 9 BT.2020, …
    int transfer = 2;  ///< 1 BT.709, 16 PQ, 18 HLG, …
    int matrix = 2;    ///< 1 BT.709, 6 BT.601, 9 BT.2020, 0 RGB
    bool isFullRange = false;
    /// Horizontal chroma siting: midway between luma samples (MPEG-1, JPEG), or co-sited with the
    /// left one (MPEG-2, the default).
    bool chromaIsCentered = false;

    static constexpr ColorTags bt709() { return {1, 1, 1, false, false}; }
    static constexpr ColorTags hlg() { return {9, 18, 9, false, false}; }

    bool isHDR() const { return transfer == 16 || transfer == 18; }

    bool operator==(ColorTags const&) const = default;
};

/// One frame of video. Copies share their pixels, so copying is cheap.
///
/// Copy on write: pixels change through `writablePlane` only, which first copies them if another
/// Frame shares them. Different copies may be used on different threads.
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

    /// Pixels undefined. Throws std::bad_alloc, also for impossible sizes.
    Frame(int width, int height, PixelLayout layout, ColorTags colors);

    class Storage; ///< Defined inside the media module.
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

    WritablePlane writablePlane(int index);

    /// Whether both refer to the same memory.
    bool sharesPixelsWith(Frame const& other) const;

    Storage const& storage() const { return *m_storage; }

private:
    std::unique_ptr<Storage> m_storage; ///< Never null, but in a moved-from Frame.
};

/// Returns the memory pooled for future frames to the system; frames in use are unaffected. Call it
/// after a long run such as an export. Any thread.
void releaseSpareFrames();

} // namespace framewright
