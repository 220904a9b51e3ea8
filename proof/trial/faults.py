"""Every call that may fail is made to fail, once and from then on: faults.py PRESET POINTS
With POINTS 0 every point of every scenario, else so many of them, picked by chance of a fixed seed."""

import errno
import random
import sys

import scenarios
import trial

# How each kind of call can go wrong, and with which statuses the run ends then. 0 is for what is tried again,
# or told and gone on without.
WAYS = {
    "open": ([errno.EIO, errno.ENOSPC, errno.EMFILE, errno.EACCES], {0, 20, 22}),
    "read": ([errno.EIO, "short", errno.EINTR], {21}),
    "write": ([errno.EIO, errno.ENOSPC, "short", errno.EINTR], {22}),
    "close": ([errno.EIO, errno.ENOSPC, errno.EINTR], {22}),
    "mkdir": ([errno.ENOSPC, errno.EIO], {0, 20}),
    # What does not exist (ENOENT, EACCES and the like) is no fault.
    "stat": ([errno.EIO, errno.ENOMEM], {0, 10, 20, 22, 23}),
    "memory": ([errno.ENOMEM], {0, 20, 22, 40, 255}),
    "console": ([errno.EIO, errno.ENOSPC, "short"], {0}),
    "limit": ([errno.EPERM], {0}),
}
HARMLESS = ("short", errno.EINTR)  # nothing has failed: the rest can be asked for
FOREVER_ENDLESS = (errno.EINTR,)  # a call that is interrupted for ever may be tried for ever


def points(counts):
    """Every way in which every call can fail."""
    for kind, (ways, _) in WAYS.items():
        for at in range(1, counts[kind] + 1):
            for how in ways:
                yield kind, at, how, False
                if how not in FOREVER_ENDLESS:
                    yield kind, at, how, True


def judge(place, scenario, outcome, point, reference, console):
    """What is wrong with a run; None when nothing is."""
    kind, _, how, _ = point
    files = trial.tree(place.out)
    if outcome.hung:
        return "it hangs"
    if outcome.status < 0:
        return f"signal {-outcome.status}"
    if outcome.status not in ({0} if how in HARMLESS else WAYS[kind][1]):
        return f"status {outcome.status}"
    before = scenario.before
    header_fault = trial.header_fault(outcome, files, reference)
    if header_fault:
        return header_fault
    if outcome.status != 0:
        if not outcome.has_last_words():
            return f"status {outcome.status} without a word"
        told = outcome.told() and not console_has(console, outcome)
        return trial.early_end_fault(files, reference, before, told)
    if kind == "console":
        return trial.same_fault(files, reference)
    if outcome.told() and not console_has(console, outcome):
        if trial.samples(files) != trial.samples(reference):
            return "told of a loss, and samples are missing"
        return None
    if outcome.err:
        return "status 0, and words on standard error"
    if outcome.out != console:
        return "status 0, and the console differs"
    return trial.same_fault(files, reference)


def console_has(console, outcome):
    """True when the undisturbed run says as much as this one."""
    texts = [text.encode() for text in trial.TOLD_AND_GONE_ON]
    return all((text in console) >= (text in outcome.out) for text in texts)


def orders(point):
    kind, at, how, always = point
    return {"KIND": kind, "AT": at, "HOW": how, "ALWAYS": int(always)}


def named(scenario, point):
    kind, at, how, always = point
    how = errno.errorcode.get(how, how)
    return f"{scenario.name}, {kind} {at}{' and on' if always else ''} {how}"


def try_scenario(place, scenario, account, share):
    place.lay_out(scenario.recording, scenario.ini, scenario.before)
    whole = place.run(scenario.arguments, **scenario.limits())
    reference = trial.tree(place.out)
    counts = place.counts()
    assert whole.status == 0 and not whole.err, whole.words
    calls = ", ".join(f"{kind} {counts[kind]}" for kind in trial.KINDS)
    print(f"   {scenario.name}: {len(reference)} files; {calls}", flush=True)
    around = None
    for point in share(list(points(counts))):
        place.lay_out(scenario.recording, scenario.ini, scenario.before)
        around = around or place.around()
        outcome = place.run(scenario.arguments, orders(point), **scenario.limits())
        fault = judge(place, scenario, outcome, point, reference, whole.out)
        if not fault and place.around() != around:
            fault = "something outside of the output folder changed"
        struck = place.counts()["faults"] > 0
        if not fault and not struck:
            fault = "the fault did not happen"
        account.note(named(scenario, point), outcome.status, fault, struck)


def main():
    build = trial.Build(sys.argv[1])
    most = int(sys.argv[2])
    chance = random.Random(1)
    account = trial.Account()
    with trial.Place(build) as place:
        chosen = scenarios.all_of(place)

        def share(all_points):
            part = most // len(chosen) if most else len(all_points)
            return all_points if part >= len(all_points) else chance.sample(all_points, part)

        for scenario in chosen:
            try_scenario(place, scenario, account, share)
    print(account.figures())
    sys.exit(1 if account.findings else 0)


main()
