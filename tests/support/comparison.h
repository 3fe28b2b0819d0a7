// Draws the same calls with the model and with the renderer's kernel sets, and finds where they part.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/model/model.h"
#include "tests/support/scene.h"
#include "tests/support/test_renderer.h"

class Comparison {
public:
    // Every available kernel set against the model.
    explicit Comparison(const Renderer_Setup& setup);

    void set_contents(const std::vector<std::uint32_t>& colors, const std::vector<std::uint16_t>& depths);
    // Draws the call everywhere. Says how the first kernel set that differs from the model does, empty when none does.
    std::string draw(const Call& call);

    Test_Renderer& renderer(std::size_t kernel_set) noexcept { return *renderers_[kernel_set]; }

private:
    std::string difference_from(Test_Renderer& renderer) const;
    void adopt(Test_Renderer& renderer);

    model::Model model_;
    std::vector<std::unique_ptr<Test_Renderer>> renderers_;
};

// Calls the slots that the call stands for.
void draw(Test_Renderer& renderer, const Call& call);
// The same on the model; the host functions that it hands over to.
model::Model::Handed_Over draw(model::Model& model, const Call& call);
