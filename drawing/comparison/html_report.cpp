// A comparison as a page for a browser.
#include "drawing/comparison/html_report.h"

#include "drawing/comparison/quoting.h"
#include "drawing/files/input_file.h"
#include "drawing/files/interruption.h"
#include "drawing/image/pixel_values.h"
#include "drawing/image/stored_image.h"

namespace vorna::drawing::comparison {

namespace {

// The policy keeps browsers from asking any other place for anything. Images lie side by side, one over the other with the
// slider's opacity, or take turns: styles do all but the slider.
constexpr std::string_view head = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; img-src data:; style-src 'unsafe-inline'; script-src 'unsafe-inline'">
<meta name="viewport" content="width=device-width">
<title>Comparison of images</title>
<style>
body { font: 15px/1.4 sans-serif; margin: 1.5em; color: #222; background: #fff; }
h1 { font-size: 1.4em; } h2 { font-size: 1.1em; overflow-wrap: anywhere; }
section { border-top: 1px solid #bbb; margin-top: 1.5em; }
pre { background: #f2f2f2; padding: .6em; overflow-x: auto; user-select: all; }
.figures { display: grid; grid-template-columns: repeat(3, minmax(0, 1fr)); gap: 1em; margin-top: .6em; }
figure { margin: 0; } figcaption { color: #555; background: #fff; }
img { max-width: 100%; image-rendering: pixelated; outline: 1px solid #ccc;
  background: repeating-conic-gradient(#ddd 0 25%, #fff 0 50%) 0 0 / 16px 16px; }
.over:checked ~ .figures, .blink:checked ~ .figures { grid-template-columns: minmax(0, 2fr) minmax(0, 1fr); }
.over:checked ~ .figures .first, .blink:checked ~ .figures .first,
.over:checked ~ .figures .second, .blink:checked ~ .figures .second { grid-area: 1 / 1; }
.over:checked ~ .figures .second { opacity: var(--opacity, .5); }
.over:checked ~ .figures .first figcaption, .over:checked ~ .figures .second figcaption { visibility: hidden; }
.blink:checked ~ .figures .second { animation: blink 1s step-end infinite; }
@keyframes blink { 0% { opacity: 1; } 50% { opacity: 0; } }
.opacity { display: none; vertical-align: middle; } .over:checked ~ .opacity { display: inline-block; }
</style>
</head>
<body>
)";

// PNG files.
struct Figures {
    std::string first, second, difference; // empty where there is none
};

// Images that only one folder has are read for the first time: the text tells what is wrong with them.
std::string lonely_png(const std::string& path, std::string& text, Load_Limits& limits) {
    try {
        return path.empty() ? "" : color_png(read_stored_image(name_of_input(path), read_input(path, limits), limits));
    } catch (const Usage_Error& error) {
        text += std::string("; ") + error.what();
        return "";
    }
}

Figures figures_of(Pair_Result& pair, const Report& report, const Html_Settings& settings) {
    Load_Limits limits(settings.memory);
    if (pair.paths.first.empty() || pair.paths.second.empty()) {
        return {lonely_png(pair.paths.first, pair.text, limits), lonely_png(pair.paths.second, pair.text, limits), ""};
    }
    const Image_Pair images = load(pair.paths, limits);
    const bool have_one_size = images.first.width == images.second.width && images.first.height == images.second.height;
    return {color_png(images.first), color_png(images.second),
            have_one_size ? difference_png(images.first, images.second, settings_of(images, report.accepted)) : ""};
}

std::string figure(std::string_view kind, std::string_view caption, const std::string& png) {
    return png.empty()
               ? ""
               : "<figure class=\"" + std::string(kind) + "\"><figcaption>" + std::string(caption) + "</figcaption><img alt=\"" +
                     std::string(caption) + "\" src=\"data:image/png;base64," + base64(png) + "\"></figure>\n";
}

std::string folder_of(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == path.npos ? "" : slash == 0 ? "/" : path.substr(0, slash);
}

constexpr const char* opacity_slider =
    R"(<input class="opacity" type="range" min="0" max="1" step="0.01" value="0.5" aria-label="opacity"
oninput='this.parentNode.style.setProperty(`--opacity`, this.value)'>
)";

// The command that makes the first folder or file hold what the second one does; a comment where it could not be copied from the
// page.
std::string accept_command(const Pair_Result& pair, const Report& report) {
    const auto& [first, second, mask] = pair.paths;
    if (!is_plain(first + second + report.first + pair.name)) {
        return "# a name with control characters, to be accepted by hand";
    }
    switch (pair.verdict) {
    case Verdict::missing:
        return "rm -- " + shell_quoted(first);
    case Verdict::extra: {
        const std::string target = report.first + (report.first.ends_with('/') ? "" : "/") + pair.name;
        return "mkdir -p -- " + shell_quoted(folder_of(target)) + " && cp -- " + shell_quoted(second) + ' ' +
               shell_quoted(target);
    }
    default:
        return "cp -- " + shell_quoted(second) + ' ' + shell_quoted(first);
    }
}

std::string section_of(const Pair_Result& pair, const Report& report, const Figures& figures, std::size_t number) {
    std::string html = "<section>\n<h2>" + markup_escaped(pair.name) + "</h2>\n<p>" + markup_escaped(pair.text) + "</p>\n";
    if (pair.verdict != Verdict::unreadable) {
        html += "<pre>" + markup_escaped(accept_command(pair, report)) + "</pre>\n";
    }
    if (!figures.first.empty() && !figures.second.empty()) {
        const std::string name = "view" + std::to_string(number);
        const auto choice = [&](const std::string& kind, const std::string& text, const char* state) {
            return "<input type=\"radio\" class=\"" + kind + "\" name=\"" + name + "\" id=\"" + name + kind + "\"" + state +
                   "><label for=\"" + name + kind + "\">" + text + "</label>\n";
        };
        html += choice("side", "side by side", " checked") + choice("blink", "blink", "") + choice("over", "overlay", "") +
                opacity_slider;
    }
    return html + "<div class=\"figures\">\n" + figure("first", "before", figures.first) +
           figure("second", "after", figures.second) + figure("difference", "difference", figures.difference) +
           "</div>\n</section>\n";
}

} // namespace

void write_html(const Report& report, const Html_Settings& settings, const std::function<void(std::string_view)>& write) {
    write(head);
    std::string summary = "<h1>" + markup_escaped(report.first) + " and " + markup_escaped(report.second) + "</h1>\n<p>";
    std::string same, accepting;
    std::size_t same_count = 0;
    for (const Pair_Result& pair : report.pairs) {
        if (pair.verdict == Verdict::same) {
            ++same_count;
            same += "<li>" + markup_escaped(pair.name) + "</li>\n";
        } else if (pair.verdict != Verdict::near && pair.verdict != Verdict::unreadable) {
            accepting += accept_command(pair, report) + '\n';
        }
    }
    summary += std::to_string(report.pairs.size()) + " compared, " + std::to_string(report.pairs.size() - same_count) +
               " not the same</p>\n";
    if (!accepting.empty()) {
        summary += "<details><summary>Commands that accept everything, for the folder in which the images were "
                   "compared</summary>\n<pre>" +
                   markup_escaped(accepting) + "</pre></details>\n";
    }
    if (!same.empty()) {
        summary += "<details><summary>" + std::to_string(same_count) + " the same</summary>\n<ul>\n" + same + "</ul></details>\n";
    }
    write(summary);
    std::uint64_t embedded = 0;
    std::size_t number = 0;
    for (const Pair_Result& pair : report.pairs) {
        if (pair.verdict == Verdict::same) {
            continue;
        }
        Interruption::check();
        Figures figures;
        Pair_Result shown = pair;
        if (pair.verdict == Verdict::unreadable) {
            // The text says why there are no images.
        } else if (embedded >= settings.most_embedded) {
            shown.text += "; without images, because the page would be too large";
        } else {
            figures = figures_of(shown, report, settings);
        }
        embedded += figures.first.size() + figures.second.size() + figures.difference.size();
        write(section_of(shown, report, figures, number++));
    }
    write("</body>\n</html>\n");
}

} // namespace vorna::drawing::comparison
