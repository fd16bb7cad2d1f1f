#include "examples/frameloop/Scene.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string_view>

namespace hostapp {

namespace {

/// In widths and heights of the picture.
struct Point
{
    double x;
    double y;
};

/// A ball goes to and fro, each way at a speed of its own: multiples of irrational numbers less their whole
/// parts spread over 0 to 1 evenly, however many there are.
Point Centre(int ball, double seconds)
{
    const auto spread = [ball](double irrational) {
        double whole = 0;
        return std::modf((ball + 1) * irrational, &whole);
    };
    const double across = seconds * (0.3 + 0.5 * spread(0.618034)) + 6.3 * spread(0.414214);
    const double down = seconds * (0.4 + 0.7 * spread(0.732051)) + 6.3 * spread(0.236068);
    return {0.5 + 0.42 * std::sin(across), 0.5 + 0.42 * std::sin(down)};
}

} // namespace

std::vector<std::wstring> DrawScene(double seconds, int balls, int columns, int rows)
{
    constexpr std::wstring_view shades = L"  .:-=+*#%@@";
    constexpr double widthOfCharacter = 0.5; // in heights

    std::vector<Point> centres;
    for (int ball = 0; ball < balls; ++ball) {
        const Point centre = Centre(ball, seconds);
        centres.push_back({centre.x * columns * widthOfCharacter, centre.y * rows});
    }
    // All balls together cover the same part of the picture, however many there are.
    const double squareOfRadius = 0.05 * columns * widthOfCharacter * rows / std::max(balls, 1);

    std::vector<std::wstring> lines;
    for (int row = 0; row < rows; ++row) {
        std::wstring& line = lines.emplace_back();
        for (int column = 0; column < columns; ++column) {
            double light = 0;
            for (const Point& centre : centres) {
                const double x = (column + 0.5) * widthOfCharacter - centre.x;
                const double y = row + 0.5 - centre.y;
                light += squareOfRadius / (x * x + y * y + 0.01);
            }
            const double shade = std::min(light, 1.0) * static_cast<double>(shades.size() - 1);
            line += shades[static_cast<std::size_t>(shade)];
        }
    }
    return lines;
}

} // namespace hostapp
