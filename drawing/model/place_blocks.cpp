// Blocks of neighbouring places of strips.
#include "drawing/model/place_blocks.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "drawing/files/helpers.h"

namespace vorna::drawing::model {
namespace {

// A strip is cut into stretches of so many triangles. Blocks consist of whole ones.
constexpr std::size_t longest_stretch = 32;
// Places of a block of several stretches, and the diagonal of the box around it. Models have a radius of 1.
constexpr std::size_t most_places = 64;
constexpr float most_diagonal = 1.0F / 16;
// Strips whose blocks a thread makes at a time.
constexpr std::size_t strips_of_task = 4096;

struct Box {
    VT_Vector low{infinity, infinity, infinity}, high{-infinity, -infinity, -infinity};

    void include(const VT_Vector& p) noexcept {
        low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
    }
    VT_Vector center() const noexcept { return {(low.x + high.x) * 0.5F, (low.y + high.y) * 0.5F, (low.z + high.z) * 0.5F}; }
    float diagonal() const noexcept {
        const float x = high.x - low.x, y = high.y - low.y, z = high.z - low.z;
        return std::sqrt(x * x + y * y + z * z);
    }

private:
    static constexpr float infinity = std::numeric_limits<float>::infinity();
};

struct Sphere {
    VT_Vector center;
    float radius = 0;
};

// A block without its place in the list.
struct Block {
    std::uint32_t start;
    Sphere sphere;
};

class Block_Maker {
public:
    Block_Maker(std::span<const VT_Vector> points, std::span<const std::uint32_t> vertices)
        : points_(points), vertices_(vertices) {}

    // Takes the stretches of a strip, which follows the one before.
    void add_strip(std::size_t start, std::size_t end) {
        for (std::size_t first = start; first + 2 < end; first += longest_stretch) {
            add_stretch(first, std::min(first + longest_stretch + 2, end));
        }
    }

    std::vector<Block> finish() {
        close();
        return std::move(blocks_);
    }

private:
    const VT_Vector& point(std::size_t place) const { return points_[vertices_[place]]; }

    void add_stretch(std::size_t first, std::size_t end) {
        Box joined = box_;
        for (std::size_t place = first; place < end; ++place) {
            joined.include(point(place));
        }
        if (is_open_ && (end - start_ > most_places || joined.diagonal() > most_diagonal)) {
            close();
            joined = {};
            for (std::size_t place = first; place < end; ++place) {
                joined.include(point(place));
            }
        }
        if (!is_open_) {
            start_ = first;
            is_open_ = true;
        }
        box_ = joined;
        end_ = end;
    }

    void close() {
        if (!is_open_) {
            return;
        }
        Sphere sphere{box_.center()};
        float square = 0;
        for (std::size_t place = start_; place < end_; ++place) {
            const VT_Vector& p = point(place);
            const float x = p.x - sphere.center.x, y = p.y - sphere.center.y, z = p.z - sphere.center.z;
            square = std::max(square, x * x + y * y + z * z);
        }
        sphere.radius = std::sqrt(square);
        blocks_.push_back({static_cast<std::uint32_t>(start_), sphere});
        is_open_ = false;
        box_ = {};
    }

    std::span<const VT_Vector> points_;
    std::span<const std::uint32_t> vertices_;
    std::vector<Block> blocks_;
    // The open block: its places, and the two after them that its last triangle has, and the box around them.
    bool is_open_ = false;
    std::size_t start_ = 0, end_ = 0;
    Box box_;
};

// A clip coordinate of a sphere: at the center, and by how much it differs at most. Errors of floats, here and where points are
// projected, are in it.
struct Row {
    float x, y, z, w, length;

    explicit Row(const double (&row)[4])
        : x(static_cast<float>(row[0])), y(static_cast<float>(row[1])), z(static_cast<float>(row[2])),
          w(static_cast<float>(row[3])),
          length(static_cast<float>(std::sqrt(row[0] * row[0] + row[1] * row[1] + row[2] * row[2]))) {}
};

} // namespace

Place_Blocks::Place_Blocks(std::span<const VT_Vector> points, std::span<const std::uint32_t> vertices,
                           std::span<const std::uint32_t> strip_starts, unsigned threads) {
    const std::size_t strips = strip_starts.size() - 1, tasks = (strips + strips_of_task - 1) / strips_of_task;
    std::vector<std::vector<Block>> parts(tasks);
    share_tasks(tasks, threads, [&](std::size_t task, std::size_t) {
        Block_Maker maker(points, vertices);
        for (std::size_t s = task * strips_of_task, end = std::min(s + strips_of_task, strips); s < end; ++s) {
            maker.add_strip(strip_starts[s], strip_starts[s + 1]);
        }
        parts[task] = maker.finish();
    });
    std::size_t count = 0;
    for (const std::vector<Block>& part : parts) {
        count += part.size();
    }
    starts_.clear();
    starts_.reserve(count + 1);
    radii_.reserve(count);
    centers_ = Vector_Columns(count);
    for (const std::vector<Block>& part : parts) {
        for (const Block& block : part) {
            centers_.set(starts_.size(), block.sphere.center);
            starts_.push_back(block.start);
            radii_.push_back(block.sphere.radius);
        }
    }
    starts_.push_back(strip_starts.back());
}

// Where w is at least l > 0 in the sphere, x / w differs from its value q at the center by at most (dx + |q| dw) / l. The loop
// has nothing behind references, so that compilers turn it into vector code.
void Place_Blocks::find_extents(std::size_t first, const Camera& camera, const VT_Int_Rectangle& frame,
                                std::span<Extent> extents) const {
    constexpr float rounding = 1e-6F;
    const Row rx(camera.clip_from_model.m[0]), ry(camera.clip_from_model.m[1]), rw(camera.clip_from_model.m[3]);
    const float *const px = &centers_.x[first], *const py = &centers_.y[first], *const pz = &centers_.z[first],
                       *const radii = &radii_[first];
    Extent* const results = extents.data();
    const std::int32_t left = frame.left, bottom = frame.bottom;
    const float half_width = static_cast<float>(frame.right - frame.left) * 0.5F,
                half_height = static_cast<float>(frame.top - frame.bottom) * 0.5F;
    for (std::size_t i = 0, count = extents.size(); i < count; ++i) {
        const auto at_center = [&](const Row& row) { return row.x * px[i] + row.y * py[i] + row.z * pz[i] + row.w; };
        const auto difference = [&](const Row& row) {
            return row.length * radii[i] + rounding * (std::abs(row.x * px[i]) + std::abs(row.y * py[i]) +
                                                       std::abs(row.z * pz[i]) + std::abs(row.w) + row.length * radii[i]);
        };
        const auto within = [](float value) { return std::min(std::max(value, -1.0F), 1.0F) + 1.0F; };
        const float w = at_center(rw), dw = difference(rw), least_w = w - dw;
        const bool is_before = least_w > 0.0F;
        const float scale = is_before ? 1.0F / w : 0.0F, reach = is_before ? 1.0F / least_w : 0.0F;
        const float x = at_center(rx) * scale, y = at_center(ry) * scale;
        const float dx = is_before ? (difference(rx) + std::abs(x) * dw) * reach : 1.0F,
                    dy = is_before ? (difference(ry) + std::abs(y) * dw) * reach : 1.0F;
        results[i].box = {left + static_cast<std::int32_t>(within(x - dx) * half_width) - 1,
                          left + static_cast<std::int32_t>(within(x + dx) * half_width) + 2,
                          bottom + static_cast<std::int32_t>(within(y - dy) * half_height) - 1,
                          bottom + static_cast<std::int32_t>(within(y + dy) * half_height) + 2};
    }
}

} // namespace vorna::drawing::model
