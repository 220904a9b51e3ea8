#include "ls/begin.h"

#include "ls/fresh.h"
#include "ls/tell.h"
#include "ls/text.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace ls {

namespace {

constexpr size_t Buffer_len = 65536;

/// Makes the directories of a path up to its last slash. False with errno.
bool make_directories(const std::string& path)
{
    for (size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1))
        if (mkdir(path.substr(0, slash).c_str(), 0777) != 0 && errno != EEXIST) return false;
    return true;
}

std::string why_not(const Entry& e)
{
    if (e.is_lost()) return why_lost(e);
    if (e.has(TraceFlag::unfinished)) return "unfinished; run vx_ls --finish first";
    if (e.has(TraceFlag::cut)) return "cut: shorter than its header says";
    if (e.has(TraceFlag::empty)) return "no samples";
    if (e.has(TraceFlag::no_rate)) return "no sample rate";
    return "";
}

void set_begin(SACHDR_T& h)
{
    const double steps = static_cast<double>(static_cast<uint32_t>(h.NPTS)) - 1.0;
    h.B = 0.0F;
    h.E = static_cast<float>(steps * static_cast<double>(h.DELTA));
}

/// Returns an empty text on success, else the reason of the failure.
std::string copy(trace::InputFile& input, trace::TraceHeader& trace, const std::string& target)
{
    struct stat there;
    if (lstat(target.c_str(), &there) == 0) return strerror(EEXIST);
    Fresh fresh;
    if (!make_directories(target) || !fresh.create(target)) return strerror(errno);
    char buffer[Buffer_len];
    set_begin(trace.header);
    trace::encode(trace.header, trace.order, buffer);
    if (!fresh.write({buffer, Sac_header_len})) return strerror(errno);
    uint64_t copied = 0;
    for (;;) {
        const int64_t got = input.read(buffer, Buffer_len);
        if (got < 0) return strerror(errno);
        if (got == 0) break;
        if (!fresh.write({buffer, static_cast<size_t>(got)})) return strerror(errno);
        copied += static_cast<uint64_t>(got);
    }
    if (copied != trace.data_len || !input.is_unchanged()) return "changed while it was read; not copied";
    return fresh.place(input.is) ? "" : strerror(errno);
}

bool copy_one(const trace::TracePath& file, const std::string& dir)
{
    trace::InputFile input;
    trace::TraceHeader trace;
    const trace::Found found = trace::open_trace(file.path, input, trace);
    const std::string why = why_not(make_entry(file.path, found, input, trace));
    if (!why.empty()) {
        complain(file.path, why);
        return false;
    }
    const std::string target = dir + std::string(file.relative());
    const std::string failure = copy(input, trace, target);
    if (!failure.empty()) complain(target, failure);
    return failure.empty();
}

} // namespace

bool copy_with_begin(const std::string& dir, const std::vector<std::string>& paths)
{
    const std::string into = dir.ends_with('/') ? dir : dir + '/';
    struct stat own;
    if (!make_directories(into) || stat(into.c_str(), &own) != 0) {
        complain(dir, strerror(errno));
        return false;
    }
    const trace::Walk walk = trace::find_traces(paths, &own);
    bool all = tell_troubles(walk);
    size_t copied = 0;
    for (const trace::TracePath& file : walk.files) {
        const bool done = copy_one(file, into);
        copied += done;
        all = all && done;
    }
    printf("%zu copied to %s, %zu not copied\n", copied, printable(dir).c_str(), walk.files.size() - copied);
    return all;
}

} // namespace ls
