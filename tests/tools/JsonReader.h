// A small JSON reader for the tests: enough of the grammar to parse back what
// `zelplay info --json` prints (objects, arrays, strings, numbers, literals)
// and to reject anything malformed, so the output is checked as real JSON.
#ifndef ZEL_TESTS_TOOLS_JSONREADER_H
#define ZEL_TESTS_TOOLS_JSONREADER_H

#include <cctype>
#include <cstdlib>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

struct Json {
    enum Kind { kNull, kBool, kNumber, kString, kArray, kObject } kind = kNull;
    bool boolean = false;
    double number = 0;
    std::string string;
    std::vector<Json> array;
    std::map<std::string, Json> object;

    const Json& operator[](const std::string& key) const {
        auto it = object.find(key);
        if (kind != kObject || it == object.end()) throw std::out_of_range("no key " + key);
        return it->second;
    }
};

class JsonReader {
public:
    static Json Parse(const std::string& text) {
        JsonReader r(text);
        Json v = r.Value();
        r.Space();
        if (r.pos_ != text.size()) r.Fail("trailing characters");
        return v;
    }

private:
    explicit JsonReader(const std::string& text) : s_(text) {}

    [[noreturn]] void Fail(const std::string& why) const {
        throw std::runtime_error("JSON: " + why + " at " + std::to_string(pos_));
    }
    void Space() {
        while (pos_ < s_.size() && std::isspace(static_cast<unsigned char>(s_[pos_]))) ++pos_;
    }
    bool Eat(char c) {
        Space();
        if (pos_ < s_.size() && s_[pos_] == c) {
            ++pos_;
            return true;
        }
        return false;
    }
    void Expect(char c) {
        if (!Eat(c)) Fail(std::string("expected ") + c);
    }
    std::string String() {
        Expect('"');
        std::string out;
        while (pos_ < s_.size() && s_[pos_] != '"') {
            char c = s_[pos_++];
            if (c == '\\') {
                if (pos_ >= s_.size()) Fail("bad escape");
                c = s_[pos_++];
                if (c == 'u') {
                    if (pos_ + 4 > s_.size()) Fail("bad \\u escape");
                    out += char(std::strtol(s_.substr(pos_, 4).c_str(), nullptr, 16));
                    pos_ += 4;
                    continue;
                }
                if (c == 'n') c = '\n';
            } else if (static_cast<unsigned char>(c) < 0x20) {
                Fail("control character in string");
            }
            out += c;
        }
        Expect('"');
        return out;
    }
    Json Value() {
        Json v;
        Space();
        if (pos_ >= s_.size()) Fail("unexpected end");
        const char c = s_[pos_];
        if (c == '{') {
            ++pos_;
            v.kind = Json::kObject;
            if (Eat('}')) return v;
            do {
                Space();
                std::string key = String();
                Expect(':');
                v.object[key] = Value();
            } while (Eat(','));
            Expect('}');
        } else if (c == '[') {
            ++pos_;
            v.kind = Json::kArray;
            if (Eat(']')) return v;
            do v.array.push_back(Value());
            while (Eat(','));
            Expect(']');
        } else if (c == '"') {
            v.kind = Json::kString;
            v.string = String();
        } else if (s_.compare(pos_, 4, "true") == 0 || s_.compare(pos_, 5, "false") == 0) {
            v.kind = Json::kBool;
            v.boolean = s_[pos_] == 't';
            pos_ += v.boolean ? 4 : 5;
        } else if (s_.compare(pos_, 4, "null") == 0) {
            pos_ += 4;
        } else {
            char* end = nullptr;
            v.kind = Json::kNumber;
            v.number = std::strtod(s_.c_str() + pos_, &end);
            if (end == s_.c_str() + pos_) Fail("unexpected character");
            pos_ = size_t(end - s_.c_str());
        }
        return v;
    }

    const std::string& s_;
    size_t pos_ = 0;
};

#endif
