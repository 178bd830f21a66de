# The renderer's plain form, for the comparisons and the benchmark.
brillatrix_library(plain_render plain/PlainFlare.cpp plain/PlainRender.cpp plain/PlainStars.cpp)
target_link_libraries(plain_render PUBLIC render engine)
