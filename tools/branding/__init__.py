"""Makes a partner's installer out of a built one, and tells what an existing one would do."""
