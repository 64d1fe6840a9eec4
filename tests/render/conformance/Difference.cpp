#include "tests/render/conformance/Difference.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>

namespace tarvo::render::conformance {
namespace {

/// Neighbours in a blurred picture are nearer to each other than this.
constexpr int hardEdge = 48;

int colourDistance(const Bgra& a, const Bgra& b) {
    return std::max({std::abs(a.blue - b.blue), std::abs(a.green - b.green), std::abs(a.red - b.red)});
}

/// A border of the clear colour with less contrast than this shows no difference that counts.
constexpr int clearBorder = 4;

bool isEdge(const Bgra& a, const Bgra& b) {
    const int distance = colourDistance(a, b);
    return distance >= hardEdge || (distance >= clearBorder && (a == opaqueBlack || b == opaqueBlack));
}

struct Figures {
    int worst = 0;
    double meanTotal = 0.0;
    double worstMean = 0.0;
    double worstMaskedShare = 0.0;
    int pictureCount = 0;
};

using FiguresByProgram = std::map<std::pair<std::string, std::string>, Figures>;

FiguresByProgram& allFigures() {
    static FiguresByProgram figures;
    return figures;
}

class CFiguresPrinter final : public testing::Environment {
public:
    void TearDown() override {
        if (allFigures().empty()) {
            return;
        }
        std::printf("%-12s %-18s %9s %6s %8s %11s %13s\n", "device", "program", "pictures", "worst", "mean",
                    "worst mean", "most masked");
        for (const auto& [key, figures] : allFigures()) {
            std::printf("%-12s %-18s %9d %6d %8.4f %11.4f %12.1f%%\n", key.first.c_str(), key.second.c_str(),
                        figures.pictureCount, figures.worst, figures.meanTotal / figures.pictureCount,
                        figures.worstMean, 100.0 * figures.worstMaskedShare);
        }
    }
};

[[maybe_unused]] const testing::Environment* const printer =
    testing::AddGlobalTestEnvironment(new CFiguresPrinter);

} // namespace

std::vector<bool> edgeMask(const Picture& reference) {
    std::vector<bool> mask(reference.pixels.size());
    const auto index = [&](int x, int y) {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(reference.width) +
               static_cast<std::size_t>(x);
    };
    for (int y = 0; y < reference.height; ++y) {
        for (int x = 0; x < reference.width; ++x) {
            // Right, and the three below: every pair of neighbours once.
            for (const auto& [nextX, nextY] :
                 {std::pair{x + 1, y}, {x - 1, y + 1}, {x, y + 1}, {x + 1, y + 1}}) {
                if (nextX < 0 || nextX >= reference.width || nextY >= reference.height) {
                    continue;
                }
                if (isEdge(reference.at(x, y), reference.at(nextX, nextY))) {
                    mask[index(x, y)] = mask[index(nextX, nextY)] = true;
                }
            }
        }
    }
    return mask;
}

Difference differenceOf(const Picture& reference, const Picture& other, const std::vector<bool>& mask) {
    Difference result;
    long total = 0;
    long maskedCount = 0;
    for (std::size_t i = 0; i < reference.pixels.size(); ++i) {
        const Bgra& a = reference.pixels[i];
        const Bgra& b = other.pixels[i];
        const int distance = std::max(colourDistance(a, b), std::abs(a.alpha - b.alpha));
        if (mask[i]) {
            ++maskedCount;
            result.worstMasked = std::max(result.worstMasked, distance);
            continue;
        }
        total += std::abs(a.blue - b.blue) + std::abs(a.green - b.green) + std::abs(a.red - b.red);
        if (distance > result.worst) {
            result.worst = distance;
            result.x = static_cast<int>(i) % reference.width;
            result.y = static_cast<int>(i) / reference.width;
        }
    }
    const auto pixelCount = static_cast<double>(reference.pixels.size());
    const double compared = pixelCount - static_cast<double>(maskedCount);
    result.mean = compared > 0.0 ? static_cast<double>(total) / (3.0 * compared) : 0.0;
    result.maskedShare = static_cast<double>(maskedCount) / pixelCount;
    return result;
}

Difference differenceOf(const Picture& reference, const Picture& other) {
    return differenceOf(reference, other, std::vector<bool>(reference.pixels.size()));
}

void recordFigures(const std::string& device, const char* program, const Difference& difference) {
    Figures& figures = allFigures()[{device, program}];
    ++figures.pictureCount;
    figures.worst = std::max(figures.worst, difference.worst);
    figures.meanTotal += difference.mean;
    figures.worstMean = std::max(figures.worstMean, difference.mean);
    figures.worstMaskedShare = std::max(figures.worstMaskedShare, difference.maskedShare);
}

} // namespace tarvo::render::conformance
