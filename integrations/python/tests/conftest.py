import hypothesis

# Every run tries the same examples, so that a failure on one machine is one on every other.
hypothesis.settings.register_profile("kor", derandomize=True, deadline=None, database=None, max_examples=60)
hypothesis.settings.load_profile("kor")
