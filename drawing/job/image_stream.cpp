// Images that go into a file while they are being drawn.
#include "drawing/job/image_stream.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>

#include "drawing/files/helpers.h"
#include "drawing/files/interruption.h"

namespace vorna::drawing {

namespace {

// Of a thread that packs: the packer's state and what it has packed.
constexpr std::uint64_t thread_memory = std::uint64_t{3} << 20;

} // namespace

// All state is under one lock, which is held to choose work and to note that it is done, and not while it is done.
class Image_Stream {
public:
    Image_Stream(Output_File& file, const Png_Form& form, const Row_Source& source, const Stream_Settings& settings)
        : file_(file), form_(form), source_(source), settings_(settings), parts_done_(source.band_ends.size()) {}

    void run() {
        file_.write(png_head(form_));
        run_on_threads(settings_.threads, [this](std::size_t thread) { work(static_cast<unsigned>(thread)); });
        if (failure_) {
            std::rethrow_exception(failure_);
        }
        file_.write(png_tail());
    }

private:
    enum class State { filling, whole, hashing, hashed, filtering, filtered, packing, packed };
    struct Stage {
        std::shared_ptr<Png_Block> block, before;
        State state = State::filling;
        bool is_before_filtered = true;
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
        return write(lock) || pack(lock) || hash(lock) || filter(lock) || make(thread, lock);
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
        const std::shared_ptr<Png_Block> block = stages_.front().block;
        without(lock, [&] { file_.write(block->chunks(checksum_)); });
        stages_.pop_front();
        rows_written_ = block->end_row();
        writing_ = false;
        changed_.notify_all();
        return true;
    }

    bool pack(Lock& lock) {
        Stage* stage = find([](const Stage& s) { return s.state == State::filtered && s.is_before_filtered; });
        if (!stage) {
            return false;
        }
        stage->state = State::packing;
        without(lock, [&] { stage->block->pack(stage->before.get()); });
        stage->before = nullptr;
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
            Png_Block& block = *stage->block;
            for (std::uint32_t row = block.first_row(); row < block.end_row(); ++row) {
                settings_.hash->add(block.samples(row), form_.row_bytes());
            }
        });
        hashing_ = false;
        stage->state = State::hashed;
        return true;
    }

    bool filter(Lock& lock) {
        const State ready = settings_.hash ? State::hashed : State::whole;
        Stage* stage = find([=](const Stage& s) { return s.state == ready; });
        if (!stage) {
            return false;
        }
        stage->state = State::filtering;
        without(lock, [&] { stage->block->filter(); });
        stage->state = State::filtered;
        if (Stage* next = find([&](const Stage& s) { return s.before == stage->block; })) {
            next->is_before_filtered = true;
        }
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
            Stage stage;
            stage.block = std::make_shared<Png_Block>(form_, rows_open_);
            rows_open_ = stage.block->end_row();
            stage.before = last_block_;
            const Stage* last = find([&](const Stage& s) { return s.block == last_block_; });
            stage.is_before_filtered = !last || last->state >= State::filtered;
            last_block_ = stage.block;
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
            while (stage->block->end_row() <= row) {
                ++stage;
            }
            places.places_.push_back(stage->block->samples(row));
        }
        return places;
    }

    // A block that becomes whole leaves its last row to the next one's filter before its own changes it.
    void note_whole_blocks() {
        for (Stage& stage : stages_) {
            if (!above_.empty() && stage.block->first_row() == above_row_) {
                stage.block->set_above(above_.data());
                above_.clear();
            }
            if (stage.state == State::filling && stage.block->end_row() <= rows_made_) {
                const std::uint8_t* last_row = stage.block->samples(stage.block->end_row() - 1);
                above_.assign(last_row, last_row + form_.row_bytes());
                above_row_ = stage.block->end_row();
                stage.state = State::whole;
            }
        }
    }

    Output_File& file_;
    const Png_Form& form_;
    const Row_Source& source_;
    const Stream_Settings& settings_;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::exception_ptr failure_;

    std::deque<Stage> stages_; // blocks that are not written yet; references to them stay good
    std::shared_ptr<Png_Block> last_block_;
    std::vector<std::uint8_t> above_; // the row above above_row_, for a block that is not open yet
    std::uint32_t above_row_ = 0;
    std::uint32_t rows_open_ = 0, rows_made_ = 0, rows_written_ = 0;
    std::vector<std::uint32_t> parts_done_; // by band
    std::size_t whole_bands_ = 0, next_band_ = 0;
    std::uint32_t next_part_ = 0;
    std::uint32_t checksum_ = 1;
    bool writing_ = false, hashing_ = false;
};

std::uint64_t stream_memory(const Png_Form& form, const std::vector<std::uint32_t>& band_ends, const Stream_Settings& settings) {
    std::uint32_t largest_band = 0, before = 0;
    for (const std::uint32_t end : band_ends) {
        largest_band = std::max(largest_band, end - before);
        before = end;
    }
    const std::uint64_t block = png_block_rows(form);
    const std::uint64_t rows =
        std::min<std::uint64_t>(std::max<std::uint64_t>(settings.rows_ahead, largest_band) + 2 * block, form.height);
    // What is packed waits for its turn, half as large at most as the rows it came from, as a rule.
    return rows * (form.row_bytes() + 1) + settings.threads * (2 * block * (form.row_bytes() + 1) + thread_memory);
}

void stream_image(Output_File& file, const Png_Form& form, const Row_Source& source, const Stream_Settings& settings) {
    Image_Stream(file, form, source, settings).run();
}

} // namespace vorna::drawing
