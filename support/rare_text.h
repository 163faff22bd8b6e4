#ifndef TARN_SUPPORT_RARE_TEXT_H
#define TARN_SUPPORT_RARE_TEXT_H

// A text that most holders leave empty: one pointer until it is set, where
// a std::string takes four words even when empty.

#include <memory>
#include <ostream>
#include <string>

class rare_text {
public:
    rare_text() = default;
    rare_text(const std::string& s) { assign(s); }
    rare_text(const rare_text& other) { assign(other.str()); }
    rare_text& operator=(const rare_text& other) {
        if (this != &other) assign(other.str());
        return *this;
    }
    rare_text& operator=(const std::string& s) {
        assign(s);
        return *this;
    }
    const std::string& str() const {
        static const std::string none;
        return text ? *text : none;
    }
    operator const std::string&() const { return str(); }
    bool empty() const { return !text; }
    bool operator==(const rare_text& other) const { return str() == other.str(); }
    bool operator==(const std::string& s) const { return str() == s; }
    bool operator==(const char* s) const { return str() == s; }

private:
    void assign(const std::string& s) { text = s.empty() ? nullptr : std::make_unique<std::string>(s); }
    std::unique_ptr<std::string> text;
};

inline std::ostream& operator<<(std::ostream& out, const rare_text& t) { return out << t.str(); }

#endif
