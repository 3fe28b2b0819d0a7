// The peer: Mesa's llvmpipe through OSMesa.
#define GL_GLEXT_PROTOTYPES
#include <algorithm>
#include <array>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include <GL/osmesa.h>

#include "bench/canvas.h"
#include "bench/timing.h"

namespace bench {

namespace {

// One context for every canvas: no threads of its own unless asked for, so that both sides have one processor.
class Context {
public:
    Context() {
        const char* const threads = std::getenv(peer_threads);
        setenv("LP_NUM_THREADS", threads ? threads : "0", 1);
        setenv("GALLIUM_DRIVER", "llvmpipe", 1);
#if defined(__x86_64__)
        // Of its own accord it takes 256 bits.
        if (__builtin_cpu_supports("avx512bw")) {
            setenv("LP_NATIVE_VECTOR_WIDTH", "512", 0);
        }
#endif
        constexpr std::array attributes{OSMESA_FORMAT,
                                        OSMESA_BGRA,
                                        OSMESA_PROFILE,
                                        OSMESA_CORE_PROFILE,
                                        OSMESA_CONTEXT_MAJOR_VERSION,
                                        3,
                                        OSMESA_CONTEXT_MINOR_VERSION,
                                        3,
                                        0};
        context_ = OSMesaCreateContextAttribs(attributes.data(), nullptr);
        if (!context_ || !OSMesaMakeCurrent(context_, &surface_, GL_UNSIGNED_BYTE, 1, 1)) {
            throw std::runtime_error("OSMesa gives no OpenGL 3.3 context");
        }
        description_ = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
        if (description_.find("llvmpipe") == std::string::npos) {
            throw std::runtime_error("OSMesa draws with " + description_ + ", expected llvmpipe");
        }
        description_ += std::string(", OpenGL ") + reinterpret_cast<const char*>(glGetString(GL_VERSION));
    }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;
    ~Context() {
        OSMesaDestroyContext(context_);
    }

    static const Context& the() {
        static const Context context;
        return context;
    }

    const std::string& description() const noexcept {
        return description_;
    }

private:
    OSMesaContext context_ = nullptr;
    std::uint32_t surface_ = 0; // drawing goes to framebuffer objects
    std::string description_;
};

// Points arrive in clip space. INTERPOLATION is that of the colour; TEXTURED is defined where a texture modulates it.
constexpr const char* vertex_text = R"(
layout(location = 0) in vec3 position;
layout(location = 1) in vec4 color;
INTERPOLATION out vec4 face_color;
#ifdef TEXTURED
layout(location = 2) in vec2 texture_point;
out vec2 place;
#endif
void main() {
    gl_Position = vec4(position, 1.0);
    face_color = color;
#ifdef TEXTURED
    place = texture_point;
#endif
}
)";
constexpr const char* fragment_text = R"(
INTERPOLATION in vec4 face_color;
#ifdef TEXTURED
in vec2 place;
uniform sampler2D texels;
#endif
out vec4 pixel;
void main() {
    pixel = face_color;
#ifdef TEXTURED
    pixel *= texture(texels, place);
#endif
}
)";

const char* head_of(Shading shading) {
    switch (shading) {
    case Shading::flat:
        return "#version 330\n#define INTERPOLATION flat\n";
    case Shading::gouraud:
        return "#version 330\n#define INTERPOLATION smooth\n";
    case Shading::textured:
        break;
    }
    return "#version 330\n#define INTERPOLATION smooth\n#define TEXTURED\n";
}

GLuint compile(GLenum kind, const char* text, Shading shading) {
    const GLuint shader = glCreateShader(kind);
    const std::array texts{head_of(shading), text};
    glShaderSource(shader, texts.size(), texts.data(), nullptr);
    glCompileShader(shader);
    return shader;
}

struct Vertex {
    float x, y, z;
    VT_RGB32 color;
    Texture_Point texture_point;
};

// Rows of the renderer are sampled where a vertex lies on them, OpenGL's half a row higher; columns agree. OpenGL's textures have
// their lowest row first.
Vertex vertex_of(const VT_DCI_Point& point, VT_RGB32 color, Texture_Point texture_point) {
    const auto from_pixels = [](float place, std::int32_t size) { return 2 * place / static_cast<float>(size) - 1; };
    return {from_pixels(static_cast<float>(point.x), window_size.x),
            from_pixels(static_cast<float>(point.y) + 0.5F, window_size.y),
            static_cast<float>(point.z) / 32767.5F - 1,
            color,
            {texture_point.u, 1 - texture_point.v}};
}

// Runs of vertices, each drawn as the mode says.
struct Mesh {
    GLenum mode;
    std::vector<Vertex> vertices;
    std::vector<GLsizei> counts;
};

Mesh mesh_of(const Scene& scene) {
    Mesh mesh{GL_TRIANGLE_STRIP, {}, scene.lengths};
    mesh.vertices.reserve(scene.points.size());
    for (std::size_t i = 0; i < scene.points.size(); ++i) {
        mesh.vertices.push_back(vertex_of(scene.points[i], scene.colors[i],
                                          scene.texture_points.empty() ? Texture_Point{} : scene.texture_points[i]));
    }
    return mesh;
}

// A vertex at a pixel's centre and so far from it.
Vertex vertex_beside(const VT_DCI_Point& point, double x, double y, VT_RGB32 color) {
    Vertex vertex = vertex_of(point, color, {});
    vertex.x += static_cast<float>((0.5 + x) * 2 / window_size.x);
    vertex.y += static_cast<float>(y * 2 / window_size.y);
    return vertex;
}

// OpenGL leaves a line's last pixel out: lines are drawn on for one pixel more.
Mesh mesh_of(const Lines& lines) {
    Mesh mesh{GL_LINES, {}, {static_cast<GLsizei>(lines.points.size())}};
    for (std::size_t i = 0; i < lines.points.size(); i += 2) {
        const VT_DCI_Point from = lines.points[i], to = lines.points[i + 1];
        const double steps = std::max({std::abs(to.x - from.x), std::abs(to.y - from.y), 1});
        mesh.vertices.push_back(vertex_beside(from, 0, 0, lines.colors[i]));
        mesh.vertices.push_back(vertex_beside(to, (to.x - from.x) / steps, (to.y - from.y) / steps, lines.colors[i + 1]));
    }
    return mesh;
}

Mesh mesh_of(const Circles& circles) {
    Mesh mesh{static_cast<GLenum>(circles.filled ? GL_TRIANGLE_FAN : GL_LINE_LOOP), {}, {}};
    for (std::size_t i = 0; i < circles.centers.size(); ++i) {
        const std::vector<VT_Point> corners = polygon_round(circles.radii[i] + (circles.filled ? 0.5 : 0.0));
        for (const VT_Point& corner : corners) {
            mesh.vertices.push_back(vertex_beside(circles.centers[i], corner.x, corner.y, circles.colors[i]));
        }
        mesh.counts.push_back(static_cast<GLsizei>(corners.size()));
    }
    return mesh;
}

class Llvmpipe_Canvas final : public Canvas {
public:
    Llvmpipe_Canvas(const Surface& surface, const Mesh& mesh) : surface_(surface), mode_(mesh.mode), counts_(mesh.counts) {
        glGenFramebuffers(1, &framebuffer_);
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer_);
        glGenRenderbuffers(2, attachments_.data());
        attach(attachments_[0], GL_RGBA8, GL_COLOR_ATTACHMENT0);
        if (surface.depth) {
            attach(attachments_[1], GL_DEPTH_COMPONENT16, GL_DEPTH_ATTACHMENT);
        }
        if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) {
            throw std::runtime_error("OSMesa gives no framebuffer object of this kind");
        }
        link();
        fill(mesh.vertices);
        if (surface.shading == Shading::textured) {
            make_texture();
        }
    }
    ~Llvmpipe_Canvas() override {
        glDeleteFramebuffers(1, &framebuffer_);
        glDeleteRenderbuffers(2, attachments_.data());
        glDeleteProgram(program_);
        glDeleteTextures(1, &texture_);
        glDeleteBuffers(1, &buffer_);
        glDeleteVertexArrays(1, &array_);
    }

    void clear_color() override {
        use();
        constexpr std::array<float, 4> white{1, 1, 1, 1};
        glClearBufferfv(GL_COLOR, 0, white.data());
    }
    void clear_depth() override {
        use();
        constexpr float farthest = 1;
        glClearBufferfv(GL_DEPTH, 0, &farthest);
    }
    void draw() override {
        use();
        glMultiDrawArrays(mode_, firsts_.data(), counts_.data(), static_cast<GLsizei>(counts_.size()));
    }
    void finish() override { glFinish(); }

    std::vector<bool> painted_pixels() override {
        use();
        std::vector<std::uint32_t> pixels(static_cast<std::size_t>(window_size.x) * static_cast<std::size_t>(window_size.y));
        glReadPixels(0, 0, window_size.x, window_size.y, GL_BGRA, GL_UNSIGNED_BYTE, pixels.data());
        std::vector<bool> painted;
        painted.reserve(pixels.size());
        for (const std::uint32_t pixel : pixels) {
            painted.push_back(pixel != 0xFFFFFFFF);
        }
        return painted;
    }

private:
    static void attach(GLuint attachment, GLenum format, GLenum place) {
        glBindRenderbuffer(GL_RENDERBUFFER, attachment);
        glRenderbufferStorage(GL_RENDERBUFFER, format, window_size.x, window_size.y);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, place, GL_RENDERBUFFER, attachment);
    }

    void link() {
        program_ = glCreateProgram();
        for (const auto& [kind, text] :
             {std::pair{GL_VERTEX_SHADER, vertex_text}, std::pair{GL_FRAGMENT_SHADER, fragment_text}}) {
            const GLuint shader = compile(static_cast<GLenum>(kind), text, surface_.shading);
            glAttachShader(program_, shader);
            glDeleteShader(shader);
        }
        glLinkProgram(program_);
        GLint linked = 0;
        glGetProgramiv(program_, GL_LINK_STATUS, &linked);
        if (!linked) {
            throw std::runtime_error("OSMesa does not link the shaders");
        }
    }

    void fill(const std::vector<Vertex>& vertices) {
        GLint first = 0;
        for (const GLsizei count : counts_) {
            firsts_.push_back(first);
            first += count;
        }
        glGenVertexArrays(1, &array_);
        glBindVertexArray(array_);
        glGenBuffers(1, &buffer_);
        glBindBuffer(GL_ARRAY_BUFFER, buffer_);
        glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(vertices.size() * sizeof(Vertex)), vertices.data(), GL_STATIC_DRAW);
        glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, sizeof(Vertex), nullptr);
        glVertexAttribPointer(1, GL_BGRA, GL_UNSIGNED_BYTE, GL_TRUE, sizeof(Vertex),
                              reinterpret_cast<const void*>(offsetof(Vertex, color)));
        glVertexAttribPointer(2, 2, GL_FLOAT, GL_FALSE, sizeof(Vertex),
                              reinterpret_cast<const void*>(offsetof(Vertex, texture_point)));
        for (const GLuint attribute : {0U, 1U, 2U}) {
            glEnableVertexAttribArray(attribute);
        }
    }

    void make_texture() {
        glGenTextures(1, &texture_);
        glBindTexture(GL_TEXTURE_2D, texture_);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, texture_side, texture_side, 0, GL_BGRA, GL_UNSIGNED_BYTE, noise_texels().data());
    }

    // The context is shared: every call sets what this canvas needs.
    void use() const {
        const auto set = [](GLenum what, bool on) { on ? glEnable(what) : glDisable(what); };
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer_);
        glViewport(0, 0, window_size.x, window_size.y);
        set(GL_DEPTH_TEST, surface_.depth);
        glDepthFunc(GL_LEQUAL);
        set(GL_BLEND, surface_.alpha || surface_.smoothed);
        set(GL_LINE_SMOOTH, surface_.smoothed);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glUseProgram(program_);
        glBindTexture(GL_TEXTURE_2D, texture_);
        glBindVertexArray(array_);
    }

    Surface surface_;
    GLenum mode_;
    GLuint framebuffer_ = 0, program_ = 0, texture_ = 0, buffer_ = 0, array_ = 0;
    std::array<GLuint, 2> attachments_{};
    std::vector<GLint> firsts_;
    std::vector<GLsizei> counts_;
};

} // namespace

std::unique_ptr<Canvas> make_llvmpipe_canvas(const Surface& surface, const Subject& subject) {
    Context::the();
    return std::visit(
        [&surface](const auto& drawn) -> std::unique_ptr<Canvas> {
            if constexpr (requires { mesh_of(drawn); }) {
                return std::make_unique<Llvmpipe_Canvas>(surface, mesh_of(drawn));
            } else {
                throw std::runtime_error("llvmpipe is not asked to draw this");
            }
        },
        subject);
}

const char* llvmpipe_description() {
    return Context::the().description().c_str();
}

} // namespace bench
