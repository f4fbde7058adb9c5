// Holds nothing: the headers that are compiled once for many sources belong to some target, and a target has a source.
