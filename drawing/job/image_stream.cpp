// Images that go into a file while they are being drawn.
#include "drawing/job/image_stream.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <utility>

#include "drawing/files/helpers.h"
#include "drawing/files/interruption.h"
#include "drawing/image/image_formats.h"
#include "drawing/image/png_layout.h"

namespace vorna::drawing {

namespace {

// Of a thread that packs: the packer's state and what it has packed.
constexpr std::uint64_t thread_memory = std::uint64_t{3} << 20;

// Other files store all colours in one way.
bool is_looked_at(const Image_Form& form) {
    return (form.file == Image_File::png || form.file == Image_File::pdf) && looks_at_samples(form);
}

// Rows in memory, and what becomes of them.
struct Block {
    Block(std::uint32_t first_row, std::uint32_t end_row, std::size_t row_size)
        : first(first_row), end(end_row), row_bytes(row_size),
          samples(std::make_unique_for_overwrite<std::uint8_t[]>((end - first) * row_size)) {}

    std::uint8_t* row(std::uint32_t number) noexcept { return &samples[(number - first) * row_bytes]; }
    Sample_Rows rows() noexcept { return {first, end, samples.get(), before ? before->row(first - 1) : nullptr}; }

    std::uint32_t first, end;
    std::size_t row_bytes;
    std::unique_ptr<std::uint8_t[]> samples;
    std::shared_ptr<Block> before; // until the block is packed
    Packed_Rows packed;
};

void write_end(Output_File& file, Image_Encoder& encoder) {
    file.write(encoder.tail());
    for (const Patch& patch : encoder.patches()) {
        file.rewrite(patch.place, patch.bytes);
    }
}

} // namespace

// All state is under one lock, which is held to choose work and to note that it is done, and not while it is done.
class Image_Stream {
public:
    Image_Stream(Output_File& file, const Image_Form& form, Image_Encoder& encoder, const Row_Source& source,
                 const Stream_Settings& settings)
        : file_(file), form_(form), encoder_(encoder), source_(source), settings_(settings),
          parts_done_(source.band_ends.size()) {}

    void run() {
        file_.write(encoder_.head());
        run_on_threads(settings_.threads, [this](std::size_t thread) { work(static_cast<unsigned>(thread)); });
        if (failure_) {
            std::rethrow_exception(failure_);
        }
        write_end(file_, encoder_);
    }

private:
    enum class State { filling, whole, hashing, hashed, packing, packed };
    struct Stage {
        std::shared_ptr<Block> block;
        State state = State::filling;
    };
    using Lock = std::unique_lock<std::mutex>;

    void work(unsigned thread) {
        Lock lock(mutex_);
        try {
            while (!failure_ && !is_done()) {
                if (!do_something(thread, lock)) {
                    changed_.wait(lock);
                }
            }
        } catch (...) {
            if (!lock) {
                lock.lock();
            }
            if (!failure_) {
                failure_ = std::current_exception();
            }
            changed_.notify_all();
        }
    }

    bool is_done() const { return rows_written_ == form_.height; }

    // What is nearest to the file comes first.
    bool do_something(unsigned thread, Lock& lock) {
        Interruption::check();
        const double done = (static_cast<double>(rows_made_) + rows_written_) / (2.0 * form_.height);
        if (settings_.progress) {
            settings_.progress(done);
        }
        return write(lock) || pack(lock) || hash(lock) || make(thread, lock);
    }

    template <class Work> void without(Lock& lock, Work work) {
        lock.unlock();
        work();
        lock.lock();
        changed_.notify_all();
    }

    template <class Is_Ready> Stage* find(Is_Ready is_ready) {
        const auto found = std::ranges::find_if(stages_, is_ready);
        return found == stages_.end() ? nullptr : &*found;
    }

    bool write(Lock& lock) {
        if (writing_ || stages_.empty() || stages_.front().state != State::packed) {
            return false;
        }
        writing_ = true;
        const std::shared_ptr<Block> block = stages_.front().block;
        without(lock, [&] { file_.write(encoder_.join(block->rows(), std::move(block->packed))); });
        stages_.pop_front();
        rows_written_ = block->end;
        writing_ = false;
        changed_.notify_all();
        return true;
    }

    bool pack(Lock& lock) {
        const State ready = settings_.hash ? State::hashed : State::whole;
        Stage* stage = find([=](const Stage& s) { return s.state == ready; });
        if (!stage) {
            return false;
        }
        stage->state = State::packing;
        without(lock, [&] { stage->block->packed = encoder_.pack(stage->block->rows()); });
        stage->block->before = nullptr;
        stage->state = State::packed;
        return true;
    }

    // One block after the other.
    bool hash(Lock& lock) {
        const State ready = State::whole;
        if (!settings_.hash || hashing_) {
            return false;
        }
        Stage* stage = find([=](const Stage& s) { return s.state <= ready; });
        if (!stage || stage->state != ready) {
            return false;
        }
        stage->state = State::hashing;
        hashing_ = true;
        without(lock, [&] {
            Block& block = *stage->block;
            settings_.hash->add(block.samples.get(), (block.end - block.first) * form_.row_bytes());
        });
        hashing_ = false;
        stage->state = State::hashed;
        return true;
    }

    bool make(unsigned thread, Lock& lock) {
        if (next_band_ == source_.band_ends.size() || !may_begin()) {
            return false;
        }
        const std::size_t band = next_band_;
        const std::uint32_t part = next_part_;
        if (part == 0) {
            open_blocks(source_.band_ends[band]);
        }
        if (++next_part_ == source_.parts) {
            next_part_ = 0;
            ++next_band_;
        }
        const Row_Places places = places_of(band);
        without(lock, [&] { source_.make(thread, static_cast<std::uint32_t>(band), part, places); });
        ++parts_done_[band];
        while (whole_bands_ < source_.band_ends.size() && parts_done_[whole_bands_] == source_.parts) {
            rows_made_ = source_.band_ends[whole_bands_++];
        }
        note_whole_blocks();
        return true;
    }

    // Whether there is room for the next band. It gets it anyhow when nothing else can be done before.
    bool may_begin() const {
        if (next_part_ > 0) {
            return true;
        }
        const bool is_next = whole_bands_ == next_band_;
        if (source_.in_order && !is_next) {
            return false;
        }
        const bool has_room = source_.band_ends[next_band_] - rows_written_ <= settings_.rows_ahead;
        const bool waits_for_it = is_next && (stages_.empty() || stages_.front().state == State::filling);
        return has_room || waits_for_it;
    }

    void open_blocks(std::uint32_t end_row) {
        while (rows_open_ < end_row) {
            const std::uint32_t end = std::min(form_.height, rows_open_ + encoder_.block_rows());
            Stage stage{std::make_shared<Block>(rows_open_, end, form_.row_bytes())};
            stage.block->before = std::exchange(last_block_, stage.block);
            rows_open_ = end;
            stages_.push_back(std::move(stage));
        }
        if (rows_open_ == form_.height) {
            last_block_ = nullptr;
        }
    }

    Row_Places places_of(std::size_t band) {
        Row_Places places;
        places.first_ = band == 0 ? 0 : source_.band_ends[band - 1];
        auto stage = stages_.begin();
        for (std::uint32_t row = places.first_; row < source_.band_ends[band]; ++row) {
            while (stage->block->end <= row) {
                ++stage;
            }
            places.places_.push_back(stage->block->row(row));
        }
        return places;
    }

    void note_whole_blocks() {
        for (Stage& stage : stages_) {
            if (stage.state == State::filling && stage.block->end <= rows_made_) {
                stage.state = State::whole;
            }
        }
    }

    Output_File& file_;
    const Image_Form& form_;
    Image_Encoder& encoder_;
    const Row_Source& source_;
    const Stream_Settings& settings_;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::exception_ptr failure_;

    std::deque<Stage> stages_; // blocks that are not written yet; references to them stay good
    std::shared_ptr<Block> last_block_;
    std::uint32_t rows_open_ = 0, rows_made_ = 0, rows_written_ = 0;
    std::vector<std::uint32_t> parts_done_; // by band
    std::size_t whole_bands_ = 0, next_band_ = 0;
    std::uint32_t next_part_ = 0;
    bool writing_ = false, hashing_ = false;
};

namespace {

// The rows of a small image: made, looked at, then packed.
class Whole_Image {
public:
    Whole_Image(const Image_Form& form, const Row_Source& source, const Stream_Settings& settings)
        : form_(form), source_(source), settings_(settings), samples_(form.height * form.row_bytes()) {}

    void write(Output_File& file) {
        const Row_Places places(samples_.data(), form_.row_bytes(), form_.height);
        const std::size_t parts = source_.band_ends.size() * source_.parts;
        share(parts, source_.in_order ? 1 : settings_.threads, 0, [&](std::size_t part, unsigned thread) {
            source_.make(thread, static_cast<std::uint32_t>(part / source_.parts),
                         static_cast<std::uint32_t>(part % source_.parts), places);
        });
        const std::unique_ptr<Image_Encoder> encoder = image_encoder(form_, samples_.data());
        const std::uint32_t block_rows = encoder->block_rows();
        std::vector<Packed_Rows> packed((form_.height + block_rows - 1) / block_rows);
        const auto rows_of = [&](std::size_t block) {
            const auto first = static_cast<std::uint32_t>(block * block_rows);
            const std::uint8_t* start = &samples_[first * form_.row_bytes()];
            return Sample_Rows{first, std::min(first + block_rows, form_.height), start,
                               first > 0 ? start - form_.row_bytes() : nullptr};
        };
        const std::size_t digests = settings_.hash ? 1 : 0;
        share(digests + packed.size(), settings_.threads, 0.5, [&](std::size_t task, unsigned) {
            if (task < digests) {
                settings_.hash->add(samples_.data(), samples_.size());
            } else {
                packed[task - digests] = encoder->pack(rows_of(task - digests));
            }
        });
        file.write(encoder->head());
        for (std::size_t block = 0; block < packed.size(); ++block) {
            file.write(encoder->join(rows_of(block), std::move(packed[block])));
        }
        write_end(file, *encoder);
    }

private:
    // Calls work(task, thread) for all tasks. before: how much of the whole image is done.
    template <class Work> void share(std::size_t tasks, unsigned threads, double before, const Work& work) {
        std::mutex mutex;
        share_tasks(tasks, threads, [&](std::size_t task, std::size_t thread) {
            work(task, static_cast<unsigned>(thread));
            if (settings_.progress) {
                const std::lock_guard lock(mutex);
                settings_.progress(before + 0.5 * static_cast<double>(task) / static_cast<double>(tasks));
            }
        });
    }

    const Image_Form& form_;
    const Row_Source& source_;
    const Stream_Settings& settings_;
    std::vector<std::uint8_t> samples_;
};

} // namespace

std::uint64_t stream_memory(const Image_Form& form, const std::vector<std::uint32_t>& band_ends,
                            const Stream_Settings& settings) {
    std::uint32_t largest_band = 0, before = 0;
    for (const std::uint32_t end : band_ends) {
        largest_band = std::max(largest_band, end - before);
        before = end;
    }
    const std::unique_ptr<Image_Encoder> encoder = image_encoder(form);
    const std::uint64_t block = encoder->block_rows();
    std::uint64_t rows =
        std::min<std::uint64_t>(std::max<std::uint64_t>(settings.rows_ahead, largest_band) + 2 * block, form.height);
    if (is_looked_at(form)) {
        rows = form.height;
    }
    // What is packed waits for its turn, half as large at most as the rows it came from, as a rule.
    return rows * (form.row_bytes() + 1) + settings.threads * (2 * block * (form.row_bytes() + 1) + thread_memory) +
           encoder->memory();
}

void stream_image(Output_File& file, const Image_Form& form, const Row_Source& source, const Stream_Settings& settings) {
    if (is_looked_at(form)) {
        Whole_Image(form, source, settings).write(file);
        return;
    }
    const std::unique_ptr<Image_Encoder> encoder = image_encoder(form);
    Image_Stream(file, form, *encoder, source, settings).run();
}

} // namespace vorna::drawing
