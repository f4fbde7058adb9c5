"""Many runs of one scenario: the table of runs, their hand-over to Snakemake, their results as a table and a page."""

# That of the project; a test compares them.
VERSION = "1.0.0-rc1"
