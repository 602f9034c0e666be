// Nothing of its own: built for the headers that all tests share.
