"""A USB webcam without hardware: descriptors, control requests, stream and USB/IP link."""
