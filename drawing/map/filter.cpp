// Conditions on the fields of shapes.
#include "drawing/map/filter.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

#include "drawing/map/simple_style.h"

namespace vorna::drawing::map {

struct Filter::Node {
    enum class Kind { all_of, any_of, negation, is_null, equal, less, less_or_equal, greater, greater_or_equal } kind;
    std::size_t field = 0; // of comparisons
    Value value;
    std::string spelling = {}; // of the value in the condition
    std::vector<Node> parts = {};

    bool accepts(std::span<const Value> values) const;
};

namespace {

using Node = Filter::Node;
using Kind = Node::Kind;

// None for a text that is not a finite number from its start to its end.
std::optional<double> number_in_text(std::string_view text) {
    double number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool is_number = error == std::errc{} && stop == text.data() + text.size() && std::isfinite(number);
    return is_number ? std::optional(number) : std::nullopt;
}

// Of a field's value, a text too.
std::optional<double> number_in(const Value& value) {
    const auto* number = std::get_if<double>(&value);
    return number ? std::optional(*number) : number_in_text(text_of(value));
}

bool compare(const Node& node, const Value& found) {
    if (found.index() == 0) {
        return false;
    }
    const auto by = [kind = node.kind](const auto& a, const auto& b) {
        switch (kind) {
        case Kind::equal:
            return a == b;
        case Kind::less:
            return a < b;
        case Kind::less_or_equal:
            return a <= b;
        case Kind::greater:
            return a > b;
        default:
            return a >= b;
        }
    };
    const auto* wanted = std::get_if<double>(&node.value);
    const std::optional<double> number = wanted ? number_in(found) : std::nullopt;
    return number ? by(*number, *wanted) : by(text_of(found), node.spelling);
}

class Condition_Parser {
public:
    Condition_Parser(const std::string& what, std::string_view text, std::vector<std::string>& fields)
        : what_(what), text_(text), fields_(fields) {
        next();
    }

    Node parse() {
        Node node = any_of(0);
        if (!token_.empty()) {
            fail("the end, 'and' or 'or'");
        }
        return node;
    }

private:
    static constexpr int deepest = 64;

    [[noreturn]] void fail(const std::string& expected) const {
        throw Map_Error(what_ + ": column " + std::to_string(start_ + 1) + ": expected " + expected + ", found " +
                        (token_.empty() ? "the end" : "'" + token_ + "'"));
    }

    // The next token: a word, a number, a quoted text or an operator.
    void next() {
        while (place_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[place_]))) {
            ++place_;
        }
        start_ = place_;
        quote_ = 0;
        token_.clear();
        if (place_ == text_.size()) {
            return;
        }
        const char first = text_[place_];
        if (first == '\'' || first == '"') {
            const std::size_t end = text_.find(first, place_ + 1);
            if (end == text_.npos) {
                token_ = text_.substr(place_);
                fail("a closing quote");
            }
            quote_ = first;
            token_ = text_.substr(place_ + 1, end - place_ - 1);
            place_ = end + 1;
            return;
        }
        constexpr std::array operators{"==", "!=", "<>", "<=", ">=", "=", "<", ">", "(", ")", ","};
        for (const std::string_view symbol : operators) {
            if (text_.substr(place_).starts_with(symbol)) {
                token_ = symbol;
                place_ += symbol.size();
                return;
            }
        }
        const std::size_t end = std::min(text_.find_first_of(" \t\r\n=!<>(),'\"", place_), text_.size());
        token_ = text_.substr(place_, std::max<std::size_t>(end - place_, 1));
        place_ += token_.size();
    }

    bool is(std::string_view word) const {
        return quote_ == 0 &&
               std::ranges::equal(token_, word, [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; });
    }
    bool take(std::string_view word) {
        const bool found = is(word);
        if (found) {
            next();
        }
        return found;
    }

    Node any_of(int depth) {
        return joined(Kind::any_of, "or", [&] { return all_of(depth); });
    }
    Node all_of(int depth) {
        return joined(Kind::all_of, "and", [&] { return negation(depth); });
    }

    template <class Part> Node joined(Kind kind, std::string_view word, Part part) {
        Node node{.kind = kind, .value = {}};
        do {
            node.parts.push_back(part());
        } while (take(word));
        return node;
    }

    static Node negated(Node node) {
        Node result{.kind = Kind::negation, .value = {}};
        result.parts.push_back(std::move(node));
        return result;
    }

    Node negation(int depth) {
        if (depth > deepest) {
            fail("fewer parentheses");
        }
        if (take("not")) {
            return negated(negation(depth + 1));
        }
        if (take("(")) {
            Node node = any_of(depth + 1);
            if (!take(")")) {
                fail("')'");
            }
            return node;
        }
        return comparison();
    }

    Node comparison() {
        const bool is_name = quote_ == '"' || (quote_ == 0 && !token_.empty() &&
                                               std::string_view("=!<>(),").find(token_[0]) == std::string_view::npos);
        if (!is_name) {
            fail("a field");
        }
        const auto known = std::ranges::find(fields_, token_);
        const auto field = static_cast<std::size_t>(known - fields_.begin());
        if (known == fields_.end()) {
            fields_.push_back(token_);
        }
        next();
        if (take("is")) {
            const bool negative = take("not");
            if (!take("null")) {
                fail("'null'");
            }
            Node node{.kind = Kind::is_null, .field = field, .value = {}};
            return negative ? negated(std::move(node)) : node;
        }
        if (take("in")) {
            if (!take("(")) {
                fail("'('");
            }
            Node node{.kind = Kind::any_of, .value = {}};
            do {
                node.parts.push_back(compared(Kind::equal, field));
            } while (take(","));
            if (!take(")")) {
                fail("',' or ')'");
            }
            return node;
        }
        for (const auto& [symbol, kind] : {std::pair("=", Kind::equal),
                                           {"==", Kind::equal},
                                           {"<", Kind::less},
                                           {"<=", Kind::less_or_equal},
                                           {">", Kind::greater},
                                           {">=", Kind::greater_or_equal}}) {
            if (take(symbol)) {
                return compared(kind, field);
            }
        }
        if (take("!=") || take("<>")) {
            Node both{.kind = Kind::all_of, .value = {}};
            both.parts.push_back(negated({.kind = Kind::is_null, .field = field, .value = {}}));
            both.parts.push_back(negated(compared(Kind::equal, field)));
            return both;
        }
        fail("a comparison: = != < <= > >= in is");
    }

    // A comparison of a field with the value at the token.
    Node compared(Kind kind, std::size_t field) {
        if (quote_ == 0 && (token_.empty() || std::string_view("=!<>(),").find(token_[0]) != std::string_view::npos)) {
            fail("a value");
        }
        const std::optional<double> number = quote_ == 0 ? number_in_text(token_) : std::nullopt;
        Node node{.kind = kind, .field = field, .value = number ? Value(*number) : Value(token_), .spelling = token_};
        next();
        return node;
    }

    const std::string& what_;
    std::string_view text_;
    std::vector<std::string>& fields_;
    std::size_t place_ = 0, start_ = 0; // of the end and the start of the token
    std::string token_;
    char quote_ = 0;
};

} // namespace

bool Filter::Node::accepts(std::span<const Value> values) const {
    const auto accepted = [&](const Node& part) { return part.accepts(values); };
    switch (kind) {
    case Kind::all_of:
        return std::ranges::all_of(parts, accepted);
    case Kind::any_of:
        return std::ranges::any_of(parts, accepted);
    case Kind::negation:
        return !accepted(parts.front());
    case Kind::is_null:
        return values[field].index() == 0;
    default:
        return compare(*this, values[field]);
    }
}

Filter::Filter(const std::string& what, const std::string& text) {
    root_ = std::make_unique<Node>(Condition_Parser(what, text, fields_).parse());
}

Filter::~Filter() = default;
Filter::Filter(Filter&&) noexcept = default;
Filter& Filter::operator=(Filter&&) noexcept = default;

bool Filter::accepts(std::span<const Value> values) const {
    return root_->accepts(values);
}

} // namespace vorna::drawing::map
