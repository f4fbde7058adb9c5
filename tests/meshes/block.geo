// A block of 30 x 20 x 10 mm with all edges rounded by 3 mm, its middle in the origin.
SetFactory("OpenCASCADE");
Box(1) = {-15, -10, -5, 30, 20, 10};
Fillet{1}{1:12}{3}
