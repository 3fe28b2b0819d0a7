// Decides by measured times whether the pictures of a canvas are drawn by its threads or by the canvas's renderer alone.
#pragma once

#include <algorithm>
#include <cstddef>

namespace vorna {

// To keep a call takes some nanoseconds. Where calls take little more, or no processor is free for the threads, pictures are
// sooner drawn without them. Now and then a picture is drawn the other way to compare, the more rarely the more often it took
// longer.
class Thread_Profit {
public:
    bool uses_threads() const noexcept { return uses_threads_; }

    // After each flush. seconds: since the one before, of the thread that draws on the canvas, without what it slept for reasons
    // of its own. kept_calls: how many calls were kept; counts only with threads.
    void note(double seconds, std::size_t kept_calls) noexcept {
        sample_.seconds += seconds;
        sample_.kept_calls += kept_calls;
        ++sample_.flushes;
        if (sample_.seconds < least_seconds) {
            return;
        }
        const Sample sample = sample_;
        sample_ = {};
        const double per_flush = sample.seconds / static_cast<double>(sample.flushes);
        if (trial_samples_ > 0) {
            // The first sample after a change also measures caches that are cold and threads that sleep.
            if (--trial_samples_ == 0) {
                end_trial(per_flush);
            }
            return;
        }
        usual_ = usual_ == 0 ? per_flush : std::min(per_flush, usual_ + (per_flush - usual_) / 4);
        const bool threads_pay_surely =
            uses_threads_ && sample.seconds > seconds_of_large_call * static_cast<double>(sample.kept_calls);
        if (!threads_pay_surely && ++settled_samples_ >= samples_to_trial_) {
            uses_threads_ = !uses_threads_;
            trial_samples_ = 2;
        }
    }

private:
    struct Sample {
        double seconds = 0;
        std::size_t flushes = 0, kept_calls = 0;
    };

    void end_trial(double per_flush) noexcept {
        constexpr double least_gain = 0.95;
        if (per_flush < least_gain * usual_) {
            samples_to_trial_ = first_samples_to_trial;
        } else {
            uses_threads_ = !uses_threads_;
            samples_to_trial_ = std::min(2 * samples_to_trial_, most_samples_to_trial);
        }
        usual_ = 0;
        settled_samples_ = 0;
    }

    // Of a sample; shorter times are added up.
    static constexpr double least_seconds = 1e-3;
    // To keep such a call takes no hundredth of its time.
    static constexpr double seconds_of_large_call = 2e-6;
    static constexpr int first_samples_to_trial = 4, most_samples_to_trial = 256;

    bool uses_threads_ = true;
    Sample sample_;
    double usual_ = 0; // seconds a flush, recently, without trials; 0 = not known
    int settled_samples_ = 0, samples_to_trial_ = first_samples_to_trial;
    int trial_samples_ = 0; // to come
};

} // namespace vorna
