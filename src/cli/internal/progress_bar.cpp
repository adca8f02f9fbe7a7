#include "cli/internal/progress_bar.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <sys/ioctl.h>
#include <unistd.h>

namespace framewright {

namespace {

constexpr int widestBar = 40;
constexpr int narrowestBar = 4;
constexpr int defaultColumns = 80;

/// "[", "]" and " 100 %" around the bar.
constexpr int aroundBar = 8;

int terminalColumns()
{
    winsize size{};
    if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return defaultColumns;
    return size.ws_col;
}

int shownCharacters(std::string_view text)
{
    return static_cast<int>(std::ranges::count_if(
        text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

} // namespace

std::string progressBar(double fraction, std::string_view stage, int columns)
{
    double const part = std::isfinite(fraction) ? std::clamp(fraction, 0.0, 1.0) : 0;
    int const percent = static_cast<int>(std::floor(part * 100));
    std::string const figure = std::to_string(percent) + " %";
    std::string line;
    // The last column stays empty: some terminals wrap as soon as it is filled.
    int const label = stage.empty() ? 0 : shownCharacters(stage) + 2;
    int room = columns - 1 - aroundBar;
    if (label > 0 && room - label >= narrowestBar) {
        line += std::string(stage) + "  ";
        room -= label;
    }
    if (int const width = std::min(room, widestBar); width >= narrowestBar) {
        int const filled = static_cast<int>(std::floor(part * width));
        line.append("[").append(filled, '#').append(width - filled, '.').append("] ");
    }
    return line.append(5 - std::min<std::size_t>(5, figure.size()), ' ').append(figure);
}

bool ProgressLine::isUseful()
{
    return ::isatty(STDERR_FILENO) == 1;
}

void ProgressLine::draw(double fraction, std::string_view stage)
{
    std::string const bar = progressBar(fraction, stage, terminalColumns());
    std::fprintf(stderr, "\r\x1b[K%s", bar.c_str());
    std::fflush(stderr);
    m_isDrawn = true;
}

void ProgressLine::clear()
{
    if (m_isDrawn)
        std::fputs("\r\x1b[K", stderr);
    m_isDrawn = false;
}

} // namespace framewright
