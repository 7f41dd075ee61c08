# solvane_generate(): runs solvane-gen over a folder of definitions.
