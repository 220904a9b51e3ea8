"""The task given by the command line. All of it is checked before anything is changed."""
from typing import NamedTuple

from vx_runs.console import Arguments, Refusal, shown, tell
from vx_runs.files import plain_name
from vx_runs.inputs import Item, check_inputs, plan_inputs
from vx_runs.run import pending_of
from vx_runs.settings import Program, check_output, check_settings, find_program, settings_of

FLAGS = {"--retry-failed", "--dry-run", "--quiet"}
VALUED = {"--include", "--program"}


class Order(NamedTuple):
    out: str
    program: Program
    settings: list[str]
    plan: list[Item]  # all inputs
    pending: list[Item]  # inputs to be converted
    again: bool  # convert again inputs that failed or have changed
    quiet: bool
    is_trial: bool  # only print what would be done


def take_order(arguments: Arguments, beside: str, out: str, names: list[str]) -> Order:
    """`beside` is the folder of the tool, in which vx_sac may be, too."""
    if not out:
        raise Refusal("no output folder given (-o DIR; see --help)")
    out = plain_name(out)
    flags = arguments.options
    again = "--retry-failed" in flags
    program = find_program(beside, arguments.last("--program"), arguments.switches)
    plan = plan_inputs(out, names, flags.get("--include", []))
    check_output(out)
    settings = settings_of(program)
    check_settings(out, settings)
    pending = pending_of(out, plan, again)
    check_inputs(out, pending)
    return Order(out, program, settings, plan, pending, again, "--quiet" in flags, "--dry-run" in flags)


def tell_order(order: Order) -> None:
    """Prints what a dry run shows."""
    for item in order.pending:
        tell(shown(item.input))
    tell(f"{len(order.pending)} of {len(order.plan)} inputs would be converted, "
         f"{len(order.plan) - len(order.pending)} are done")
