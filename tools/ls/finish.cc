#include "ls/finish.h"

#include "ls/fresh.h"
#include "ls/lease.h"
#include "ls/tell.h"
#include "ls/text.h"
#include "model/record/records.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

namespace ls {

namespace {

constexpr size_t Buffer_len = 65536;

/// One file to finish; `why` is empty on success.
struct Task {
    const std::string& path;
    const Finishing& how;
    trace::InputFile input;
    trace::TraceHeader trace;
    Fresh fresh;
    Sums sums;
    std::string rest; ///< bytes of an incomplete sample at the end
    std::string why;

    bool fail(const std::string& reason)
    {
        why = reason;
        return false;
    }
    bool fail() { return fail(strerror(errno)); }
};

/// Checks that the number of samples follows from the length of the file.
bool may_be_finished(Task& task)
{
    const SACHDR_T& h = task.trace.header;
    struct stat what;
    if (lstat(task.path.c_str(), &what) != 0) return task.fail();
    if (S_ISLNK(what.st_mode)) return task.fail("unfinished, but a symbolic link; name the file itself");
    if (h.IFTYPE != ITIME || h.LEVEN != 1)
        return task.fail("unfinished, but not an evenly spaced time series");
    if (task.trace.data_len / 4 > std::numeric_limits<uint32_t>::max())
        return task.fail("unfinished, but more samples than a header can count");
    return true;
}

/// Checks that no program writes the trace: it would go on in the old file, which no longer has a name.
bool is_left_alone(Task& task)
{
    if (task.how.force) return true;
    std::string why = take_lease(task.input.fd);
    if (why.empty()) why = why_not_quiet(task.input.is);
    return why.empty() || task.fail("unfinished, but " + why + "; left as it is (--force finishes it)");
}

/// Checks that no other program waits to open the file. Called often, because that program is blocked.
bool is_left_alone_still(Task& task)
{
    return task.how.force || holds_lease(task.input.fd) ||
           task.fail("another program is opening it for writing; left as it is");
}

bool add_samples(Task& task, const char* bytes, size_t len)
{
    for (size_t at = 0; at < len; at += 4) {
        const float sample = trace::float_at(bytes + at, task.trace.order);
        if (!std::isfinite(sample))
            return task.fail("unfinished, but sample " + std::to_string(task.sums.count + 1) +
                             " is not a number; left as it is");
        task.sums.add(sample);
    }
    return true;
}

/// Copies the complete samples to where they belong, after the header.
bool copy_samples(Task& task)
{
    char buffer[Buffer_len];
    uint64_t ahead = task.trace.data_len;
    while (ahead > 0) {
        if (!is_left_alone_still(task)) return false;
        const size_t want = ahead < Buffer_len ? static_cast<size_t>(ahead) : Buffer_len;
        const int64_t got = task.input.read(buffer, want);
        if (got < 0) return task.fail();
        if (static_cast<size_t>(got) < want)
            return task.fail("became shorter while it was read; left as it is");
        const size_t whole = want / 4 * 4;
        if (!add_samples(task, buffer, whole)) return false;
        if (!task.how.dry_run && !task.fresh.write({buffer, whole})) return task.fail();
        task.rest.assign(buffer + whole, want - whole);
        ahead -= want;
    }
    return true;
}

void complete(SACHDR_T& h, const Sums& sums)
{
    const FoundStatistics s = sums.result();
    h.DEPMIN = s.least;
    h.DEPMAX = s.most;
    h.DEPMEN = s.mean;
    h.NPTS = static_cast<int32_t>(static_cast<uint32_t>(sums.count));
}

/// Checks that the path is still the file that was read, and that the file has not changed.
bool is_the_same_still(Task& task)
{
    struct stat now;
    if (lstat(task.path.c_str(), &now) != 0) return task.fail();
    const bool same = now.st_ino == task.input.is.st_ino && now.st_dev == task.input.is.st_dev;
    if (!same || !task.input.is_unchanged()) return task.fail("changed while it was read; left as it is");
    return is_left_alone_still(task);
}

/// Copies the samples; the header before them is written later.
bool begin_copy(Task& task)
{
    const char header[Sac_header_len] = {};
    return task.fresh.create(task.path) && task.fresh.write({header, Sac_header_len});
}

bool complete_copy(Task& task)
{
    char header[Sac_header_len];
    complete(task.trace.header, task.sums);
    trace::encode(task.trace.header, task.trace.order, header);
    return task.fresh.write_at_start({header, Sac_header_len}) && task.fresh.complete(task.input.is);
}

bool finish(Task& task)
{
    if (!may_be_finished(task) || !is_left_alone(task)) return false;
    if (!task.how.dry_run && !begin_copy(task)) return task.fail();
    if (!copy_samples(task)) return false;
    if (!task.how.dry_run && !complete_copy(task)) return task.fail();
    if (!is_the_same_still(task)) return false;
    return task.how.dry_run || task.fresh.replace() || task.fail();
}

void tell(const Task& task)
{
    const FoundStatistics s = task.sums.result();
    printf("%s: %s: %llu samples, minimum %s, maximum %s, mean %s", printable(task.path).c_str(),
           task.how.dry_run ? "would be finished" : "finished",
           static_cast<unsigned long long>(task.sums.count), shortest(s.least).c_str(),
           shortest(s.most).c_str(), shortest(s.mean).c_str());
    if (!task.rest.empty()) {
        printf("; dropped an incomplete last sample:");
        for (const char c : task.rest) printf(" %02x", static_cast<unsigned>(static_cast<uint8_t>(c)));
    }
    printf("\n");
}

enum class Done : uint8_t { finished, left, failed };

Done finish_one(const std::string& path, const Finishing& how)
{
    Task task{path, how, {}, {}, {}, {}, {}, {}};
    const trace::Found found = trace::open_trace(path, task.input, task.trace);
    const Entry entry = make_entry(path, found, task.input, task.trace);
    if (entry.is_lost()) {
        complain(path, why_lost(entry));
        return Done::failed;
    }
    if (!entry.has(TraceFlag::unfinished)) return Done::left;
    if (!finish(task)) {
        complain(path, task.why);
        return Done::failed;
    }
    tell(task);
    return Done::finished;
}

} // namespace

Sums::Sums() : least(Qcc_start), most(-Qcc_start) {}

void Sums::add(float sample)
{
    const double value = static_cast<double>(sample);
    sum += value;
    if (value < least) least = value;
    if (value > most) most = value;
    ++count;
}

FoundStatistics Sums::result() const
{
    return {static_cast<float>(least), static_cast<float>(most),
            count ? static_cast<float>(sum / static_cast<double>(count)) : 0.0F};
}

bool finish_traces(const std::vector<std::string>& paths, const Finishing& how)
{
    const trace::Walk walk = trace::find_traces(paths);
    const bool seen_all = tell_troubles(walk);
    size_t finished = 0, left = 0, failed = 0;
    for (const trace::TracePath& file : walk.files) {
        const Done done = finish_one(file.path, how);
        ++(done == Done::finished ? finished : done == Done::left ? left : failed);
    }
    printf("%zu %s, %zu left as they were, %zu could not be read or finished\n", finished,
           how.dry_run ? "would be finished" : "finished", left, failed);
    return seen_all && failed == 0;
}

} // namespace ls
