"""Many runs of one scenario: the table of runs, their hand-over to Snakemake, their results as a table and a page."""
