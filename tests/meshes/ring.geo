// A ring: outer radius 20 mm, bore 10 mm, height 10 mm, its middle in the origin; triangles in no order.
SetFactory("OpenCASCADE");
Cylinder(1) = {0, 0, -5, 0, 0, 10, 20};
Cylinder(2) = {0, 0, -5, 0, 0, 10, 10};
BooleanDifference(3) = { Volume{1}; Delete; }{ Volume{2}; Delete; };
