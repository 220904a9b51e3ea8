"""What vx_batch and vx_array share: which runs there are, what becomes of one of them, the table of all.

An output folder holds
  NAME-KEY/        one input's finished run: what vx_sac wrote, its console text (run.out, run.err), run.status
  settings         switches, station file and program of all these runs
  work/KEY.N/      a run that is going on, or was interrupted
  summary.tsv      the table
KEY is made from the input's full path. A run happens in a folder of its own under work and is moved to its place when
all of it is on the disk. So an interrupted run is never taken for a finished one, and a lost node that goes on with a
run cannot reach what is done in its stead. Whatever is read from an output folder is checked before it is used: other
people may write there, and disks fail.

The modules, each needing only those above it:
  console     what people see and type: messages, command line, signals
  files       names, whole files, removal
  settings    the program, its switches, the station file
  inputs      from names and folders to the list of inputs
  run         one input, from nothing to its folder
  order       what a command line asks for, checked before anything is changed
  table       summary.tsv
  team        many inputs, several at a time; signals
"""
