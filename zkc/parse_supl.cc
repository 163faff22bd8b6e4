#include "zkc/parse_supl.h"

#include "context/compilation.h"

#include <FlexLexer.h>

#include <charconv>
#include <cstring>
#include <iostream>
#include <string>

class_zkc_parser* pzkc_parser = nullptr;

class_zkc_parser::class_zkc_parser() { pzkc_parser = this; }

int class_zkc_parser::parse(std::ostream& log_stream, int level, std::string& suffix_text)
{
    return parse(log_stream, level, suffix_text, *Compilation::EmptyString);
}

int class_zkc_parser::parse(std::ostream& log_stream, int level, std::string& suffix_text,
                            std::string& hierarchy_text)
{
    log = &log_stream;
    trace_level = level;
    // The wood is the one of the module that the header makes.
    wood = nullptr;
    suffix = suffix_text;
    hierarchy = hierarchy_text;
    // The actions use the global, not this object: parse through the parser
    // being run even if another was built in between.
    pzkc_parser = this;
    int result = zkcparse();
    // Also after a file that stops before its equations.
    wood_catch_up();
    // Finalisation is next and needs the room; the built nodes keep the
    // references that their lines took.
    release_parse_tables();
    log->flush();
    return result;
}

void class_zkc_parser::release_parse_tables()
{
    decltype(parsed_nodes_table)().swap(parsed_nodes_table);
    for (auto& entry : sparse_nodes)
        delete entry.second;
    std::unordered_map<long, parsed_nodes_class*>().swap(sparse_nodes);
    by_internal_name.release();
    by_name.release();
    pre_by_internal_name.release();
}

int class_zkc_parser::lineno() const { return scanner ? scanner->lineno() : 0; }

int zkclex()
{
    if (pzkc_parser == nullptr || pzkc_parser->scanner == nullptr)
        return 0;
    return pzkc_parser->scanner->yylex();
}

void zkcerror(const char* text)
{
    int line = pzkc_parser ? pzkc_parser->lineno() : 0;
    std::cerr << "line " << line << ": " << text << std::endl;
}

namespace {

// "rule[,alternative] --> " head tail and a line end, in one write. The
// line is put together in one buffer: a large file writes millions of
// them. The log is flushed when the parse ends, or before a fatal end.
void write_trace_line(int rule, int alternative, std::string_view head, std::string_view tail, std::ostream& log)
{
    // Two numbers, " --> " and the line end take at most 48 characters.
    char small[256];
    static std::string large;
    const std::size_t size = head.size() + tail.size() + 48;
    char* line = small;
    if (size > sizeof small) {
        if (large.size() < size)
            large.resize(size);
        line = large.data();
    }
    char* end = line + size;
    char* p = std::to_chars(line, end, rule).ptr;
    if (alternative != 1) {
        *p++ = ',';
        p = std::to_chars(p, end, alternative).ptr;
    }
    std::memcpy(p, " --> ", 5);
    p += 5;
    if (!head.empty())
        std::memcpy(p, head.data(), head.size());
    p += head.size();
    if (!tail.empty())
        std::memcpy(p, tail.data(), tail.size());
    p += tail.size();
    *p++ = '\n';
    log.write(line, static_cast<std::streamsize>(p - line));
}

} // namespace

void zkc_debuger_law(int rule, int alternative, const char* text, int level, std::ostream& log)
{
    if (level != 1)
        return;
    write_trace_line(rule, alternative, text, {}, log);
}

bool zkc_tracing()
{
    return pzkc_parser != nullptr && pzkc_parser->log != nullptr && pzkc_parser->trace_level == 1;
}

void zkc_trace(int rule, int alternative, const std::string& text)
{
    if (pzkc_parser == nullptr || pzkc_parser->log == nullptr)
        return;
    zkc_debuger_law(rule, alternative, text.c_str(), pzkc_parser->trace_level, *pzkc_parser->log);
}

void zkc_trace(int rule, int alternative, std::string_view head, std::string_view tail)
{
    if (zkc_tracing())
        write_trace_line(rule, alternative, head, tail, *pzkc_parser->log);
}

void zkc_trace(int rule, int alternative, std::string_view head, long number)
{
    char digits[24];
    const char* end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    zkc_trace(rule, alternative, head, std::string_view(digits, static_cast<std::size_t>(end - digits)));
}

void zkc_fatal(const std::string& text)
{
    if (pzkc_parser != nullptr && pzkc_parser->log != nullptr)
        pzkc_parser->log->flush();
    std::cerr << text << std::endl;
    Compilation::exitFailure(text);
}
