// A library needs a source.
