"""The modules of vx_batch and vx_array: finding the inputs, running vx_sac on one of them, the table of all runs.

An output folder holds
  NAME-KEY/        the finished run of one input: files of vx_sac, its console text (run.out, run.err), run.status
  settings         switches, station file and program of all these runs
  work/KEY.N/      a run that is going on or was interrupted
  summary.tsv      the table
KEY is made from the input's full path. A run has its own folder in work, which is moved to its place when everything is
on the disk. So an interrupted run is never taken for a finished one, and if a node that Slurm took for lost goes on
with a run, it cannot change the result of the run that replaced it. Everything read from an output folder is checked
before it is used, because other people may write there, and disks fail.

The modules; each needs only those above it:
  console     messages, command line, signals
  files       names of files, writing and removing files
  settings    the program, its switches, the station file
  inputs      from names and folders to the list of inputs
  run         converts one input into its folder
  order       the task given by the command line, checked before anything is changed
  table       summary.tsv
  team        converts many inputs, several at a time; signals
"""
