declare module 'all-tests';
