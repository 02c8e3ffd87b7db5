"""The library's own results in words, as `zeltoport describe` has them."""

MEANINGS = {}
